# A printer for the device.
target_link_libraries(device_test PRIVATE marbex_virtual_printer)

# Beside the test program, where the driver looks for it.
add_library(lpc_sio MODULE posix/lpc_sio/lpc_sio.cpp)
set_target_properties(lpc_sio PROPERTIES PREFIX "" OUTPUT_NAME LpcSio)
target_link_libraries(lpc_sio PRIVATE marbex_options)
add_dependencies(device_test lpc_sio)
