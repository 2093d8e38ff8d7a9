# What must be true of every program file that is handed out; to be sourced. Each names what a file lacks, one a line.

# elf_lacks FILE: a program or library for Linux.
elf_lacks() {
    local file=$1 header dynamic symbols
    header=$(readelf -hlW "$file")
    dynamic=$(readelf -dW "$file")
    symbols=$(readelf --dyn-syms -W "$file")
    grep -qE '^ *Type: +DYN' <<<"$header" || echo "$file has a fixed address"
    ! grep -q 'INTERP' <<<"$header" || grep -qE 'FLAGS_1.* PIE' <<<"$dynamic" || echo "$file is not position independent"
    grep -q 'GNU_RELRO' <<<"$header" || echo "$file lets its tables be written"
    grep -qE 'BIND_NOW|FLAGS_1.* NOW' <<<"$dynamic" || echo "$file resolves functions late"
    grep -qE 'GNU_STACK .* RW +0x' <<<"$header" || echo "$file may execute its stack"
    ! grep -qE 'LOAD .* RWE ' <<<"$header" || echo "$file has memory to write and execute"
    ! grep -qE '\((RPATH|RUNPATH|TEXTREL)\)' <<<"$dynamic" || echo "$file looks for libraries in folders of its own"
    grep -q ' __stack_chk_fail' <<<"$symbols" || echo "$file does not protect its stack"
    grep -qE ' __[a-z]+_chk(@| |$)' <<<"$symbols" || echo "$file does not check the library's calls"
}

# pe_lacks FILE TARGET: a program or library for Windows; TARGET as x86_64-w64-mingw32.
pe_lacks() {
    local file=$1 header
    header=$("$2-objdump" -x "$file")
    grep -q DYNAMIC_BASE <<<"$header" || echo "$file has a fixed address"
    # Without them a program keeps the address that it was linked for.
    grep -q '\.reloc' <<<"$header" || echo "$file cannot be moved"
    grep -q NX_COMPAT <<<"$header" || echo "$file may execute data"
    [[ $2 != x86_64* ]] || grep -q HIGH_ENTROPY_VA <<<"$header" || echo "$file uses few of its addresses"
    # libssp is linked in; its texts are what is left of it in a stripped file.
    grep -q 'stack smashing detected' "$file" || echo "$file does not protect its stack"
    grep -q 'buffer overflow detected' "$file" || echo "$file does not check the library's calls"
}
