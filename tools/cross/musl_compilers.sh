#!/bin/bash
# Writes compilers for musl into a folder: musl-cc, which is Debian's musl-gcc, and
# musl-c++, which takes the headers of libstdc++ and links no C++ run-time library:
# there is none for musl. Both find the kernel's headers, and two of BSD that
# libtirpc includes and musl leaves to others.
#
#     musl_compilers.sh FOLDER
set -euo pipefail
folder=$1

version=$(gcc -dumpversion) own=$(gcc -print-multiarch)
mkdir -p "$folder/include/sys"
cp "/usr/include/$own/sys/queue.h" "$folder/include/sys/"
ln -sfn /usr/include/linux "$folder/include/linux"
ln -sfn /usr/include/asm-generic "$folder/include/asm-generic"
ln -sfn "/usr/include/$own/asm" "$folder/include/asm"
cat >"$folder/include/sys/cdefs.h" <<'END'
#ifdef __cplusplus
#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
#else
#define __BEGIN_DECLS
#define __END_DECLS
#endif
#define __P(arguments) arguments
#define __THROW
END
printf '#!/bin/sh\nexec musl-gcc -idirafter "%s" "$@"\n' "$folder/include" >"$folder/musl-cc"
cat >"$folder/musl-c++" <<END
#!/bin/sh
exec musl-gcc '-D__GLIBC_PREREQ(major,minor)=0' -D__locale_t=locale_t -nostdinc -nostdinc++ -isystem /usr/include/c++/$version -isystem /usr/include/$own/c++/$version \\
  -isystem /usr/include/$(uname -m)-linux-musl -isystem "$(gcc -print-file-name=include)" \\
  -idirafter "$folder/include" "\$@"
END
chmod +x "$folder/musl-cc" "$folder/musl-c++"
