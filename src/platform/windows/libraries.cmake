# All of these are parts of Windows.
target_link_libraries(marbex_platform PUBLIC ole32 oleaut32 uuid PRIVATE advapi32 gdi32 setupapi user32 version ws2_32)
