#!/bin/sh
# link_by_lld.sh COMPILER ARGUMENTS: the link of a MinGW program that GCC was asked for, done by LLVM's linker. GNU ld takes
# up to a minute for the thousands of sections of an unoptimised test program, LLVM's no second. GCC for MinGW calls only
# its own linker, so clang calls it. The start files are named one by one: clang's choice registers no table of exceptions
# in 32-bit programs, and GCC's crtend.o, which ends the table, must come last.
set -eu
compiler=$1
shift
file() {
  "$compiler" -print-file-name="$1"
}
exec clang++ --target="$("$compiler" -dumpmachine)" -fuse-ld=lld -Wno-unused-command-line-argument -nostdlib \
  "$(file crt2.o)" "$(file crtbegin.o)" -L"$(dirname "$(file libgcc.a)")" "$@" \
  -lssp -lstdc++ -Wl,--start-group -lmingw32 -lgcc -lgcc_eh -lmoldname -lmingwex -lmsvcrt -lpthread \
  -ladvapi32 -lshell32 -luser32 -lkernel32 -Wl,--end-group "$(file crtend.o)"
