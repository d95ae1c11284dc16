#!/bin/bash
# Writes compilers for musl into a folder: musl-cc, which is Debian's musl-gcc, and
# musl-c++, which takes the headers of libstdc++ and links no C++ run-time library:
# there is none for musl.
#
#     musl_compilers.sh FOLDER
set -euo pipefail
folder=$1

version=$(gcc -dumpversion) own=$(gcc -print-multiarch)
printf '#!/bin/sh\nexec musl-gcc "$@"\n' >"$folder/musl-cc"
cat >"$folder/musl-c++" <<END
#!/bin/sh
exec musl-gcc -nostdinc -nostdinc++ -isystem /usr/include/c++/$version -isystem /usr/include/$own/c++/$version \\
  -isystem /usr/include/$(uname -m)-linux-musl -isystem "$(gcc -print-file-name=include)" "\$@"
END
chmod +x "$folder/musl-cc" "$folder/musl-c++"
