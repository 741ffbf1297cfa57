#!/bin/sh
# The Debian packages of a build: lintian finds no errors in them, each holds what it should and needs what it must, the
# symbols are those of the library's map, the version is the project's, and foreign projects build with what is in them.
# usage: check-debs.sh SOURCE BUILD VERSION LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
source=$1 build=$2 version=$3
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; exit 1; }

"$source/scripts/package" --built "$build" --output "$work/debs"
for deb in "$work"/debs/*.deb; do
    dpkg-deb --extract "$deb" "$work/root"
done
deb() { echo "$work/debs/$1"_*.deb; }
field() { dpkg-deb --field "$(deb "$1")" "$2"; }
# PACKAGE FILE...: the package has each file, patterns allowed.
holds() {
    package=$1
    shift
    dpkg-deb --fsys-tarfile "$(deb "$package")" | tar -t | sed 's,^\./,/,' >"$work/list"
    for file in "$@"; do
        grep -qx "$file" "$work/list" || fail "$package lacks $file"
    done
    grep -q '/doc/.*/copyright$' "$work/list" || fail "$package lacks its licence"
}
library=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
holds libkro0 "$library/libkro\.so\.0" "$library/libkro\.so\.$version"
holds libkro-dev "$library/libkro\.so" "$library/libkro\.a" "$library/pkgconfig/kro\.pc" \
    "$library/cmake/kro/kroConfig\.cmake" /usr/include/kro/kro\.h /usr/include/kro/threads\.hpp
holds kro-tools /usr/bin/kro /usr/bin/kro-bench "/usr/share/man/man1/kro-convert\.1\.gz" \
    /usr/share/man/man1/kro-bench\.1\.gz /usr/share/bash-completion/completions/kro \
    /usr/share/zsh/vendor-completions/_kro /usr/share/fish/vendor_completions\.d/kro\.fish
has() { grep -q "^KRO_BUILD_$1:BOOL=ON\$" "$build/CMakeCache.txt"; }
if has GSTREAMER; then
    plugin=$library/gstreamer-1.0/libgstkro.so
    holds gstreamer1.0-kro "$plugin"
    nm -D --defined-only "$work/root$plugin" | grep -q gst_plugin_kro_get_desc || fail "$plugin is no plugin"
fi
if has PYTHON; then
    folder=/usr/lib/python3/dist-packages
    holds python3-kro $folder/kro/__init__.py $folder/kro/_kro.abi3.so
    PYTHONPATH=$work/root$folder LD_LIBRARY_PATH=$work/root$library /usr/bin/python3 -B -c \
        "import kro; assert kro.convert(bytes(16), 'BayerRG8', (4, 4)).shape == (4, 4, 3)" || fail "python3-kro fails"
fi
echo "the packages hold their files"

# The library needs the C and C++ runtimes, and nothing else.
for need in $(field libkro0 Depends | tr ',' '\n' | sed 's/^ *\([^ ]*\).*/\1/'); do
    case $need in
        libc6 | libgcc-s1 | libstdc++6) ;;
        *) fail "libkro0 needs $need" ;;
    esac
done
field kro-tools Depends | grep -q "libkro0 (>= $version)" || fail "kro-tools does not need libkro0 of its version"
field libkro-dev Depends | grep -q "libkro0 (= $version-1)" || fail "libkro-dev does not need its libkro0"
for need in libcli11 opencv gstreamer; do
    ! field kro-tools Depends | grep "$need" || fail "kro-tools needs $need"
done

# A pattern stands for all names of a version of the map.
dpkg-deb --info "$(deb libkro0)" symbols | sed -n 's/^ \([A-Za-z].*\)@\(KRO_[0-9]*\) .*/\1 \2/p' | sort |
    sed '/^\(KRO_[0-9]*\) \1$/d' >"$work/packaged"
awk '/^KRO_[0-9]+ \{/ { node = $1 } /^ +[A-Za-z0-9_]+;/ { sub(";", "", $1); print $1, node }' "$source/src/kro.map" |
    sort >"$work/mapped"
[ "$(wc -l <"$work/mapped")" -gt 100 ] || fail "the map of the library cannot be read"
diff "$work/mapped" "$work/packaged" || fail "the packaged symbols are not those of the map"
echo "$(wc -l <"$work/packaged") symbols are those of the map"

[ "$(field libkro0 Version)" = "$version-1" ] || fail "libkro0 is of version $(field libkro0 Version)"
said=$(LD_LIBRARY_PATH=$work/root$library "$work/root/usr/bin/kro" --version)
[ "$said" = "kro $version" ] || fail "the command says '$said', expected kro $version"
modversion=$(PKG_CONFIG_PATH=$work/root$library/pkgconfig pkg-config --modversion kro)
[ "$modversion" = "$version" ] || fail "kro.pc says $modversion, expected $version"
! find "$work/root/usr/bin" "$work/root/usr/lib" -type f \( -path '*/bin/*' -o -name '*.so*' \) -exec readelf -d {} + |
    grep -E 'RPATH|RUNPATH' || fail "a file has a path of its own to libraries"
echo "the version is $version everywhere"

"$source/tests/check-prefix.sh" "$work/root/usr" "$source/tests/package" "$@"
