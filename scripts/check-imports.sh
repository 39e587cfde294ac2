#!/usr/bin/env bash
# check-imports.sh EXE...: refuses an exe whose import table names a library
# the loader could take from beside the program. At start the loader resolves
# the static imports, and their own imports, before any of the program's code
# runs, and it looks in the program's own folder first for any library that is
# not one of Windows' known DLLs. The static imports allowed are known DLLs
# whose own imports are known DLLs under Wine too: kernel32, the C runtime and
# advapi32. Everything else must be delay-loaded (cmake/DelayLoad.cmake). A
# MinGW runtime DLL is refused too: the program is one self-contained exe.
# Used by scripts/dist.sh and by the ImportTable tests. DIAG_OBJDUMP names
# the objdump to use: the cross toolchain's by default, MSYS2's is plain
# objdump.
set -euo pipefail
objdump=${DIAG_OBJDUMP:-x86_64-w64-mingw32-objdump}

# The static imports allowed, in lower case.
known=" kernel32.dll msvcrt.dll advapi32.dll "

status=0
for exe in "$@"; do
  dump=$("$objdump" -p "$exe") || { echo "$exe: cannot be read" >&2; exit 2; }
  # "DLL Name:" lines of the import tables; delay-loaded libraries are not among them.
  while read -r dll; do
    lower=${dll,,}
    if [[ $lower =~ ^lib(stdc\+\+|gcc|winpthread) ]]; then
      echo "$(basename "$exe") imports $dll: a MinGW runtime DLL; it must be linked -static." >&2
      status=1
    elif [[ $known != *" $lower "* ]]; then
      echo "$(basename "$exe") imports $dll, which must be delay-loaded." >&2
      status=1
    fi
  done < <(sed -n 's/^[[:space:]]*DLL Name: *//p' <<<"$dump")
done
exit $status
