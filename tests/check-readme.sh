#!/bin/sh
# README's examples in C, C++ and Python compile and run as it says, against what a build installs, and make the same picture.
# usage: check-readme.sh README BUILD LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
readme=$1 build=$2 languages=$3 cc=$4 cxx=$5 flags=$6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null

# The fenced blocks of a language, one after the other.
blocks() { awk -v language="$1" '/^```/ { inside = $0 == "```" language; next } inside' "$readme"; }
blocks c >"$work/example.c"
blocks cpp >"$work/example.cpp"

# A frame where scripts/demo leaves one; the file is long enough that no two lines of samples are the same.
frame=$(blocks sh | sed -n 's/.*< *\([^ ]*\.raw\).*/\1/p' | sort -u)
mkdir -p "$work/$(dirname "$frame")"
seq 999999 | head -c $((1280 * 960 * 3 / 2)) >"$work/$frame"

# The commands as they stand; what an installation in /usr/local makes known is said by the environment.
mkdir "$work/bin"
printf '#!/bin/sh\nexec %s %s "$@"\n' "$cc" "$flags" >"$work/bin/cc"
printf '#!/bin/sh\nexec %s %s "$@"\n' "$cxx" "$flags" >"$work/bin/c++"
chmod +x "$work/bin/cc" "$work/bin/c++"
PATH=$work/bin:$PATH
PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name kro.pc)")
LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH")
export PATH PKG_CONFIG_PATH LD_LIBRARY_PATH

# whole PICTURE: it is all there. try SOURCE PICTURE: runs README's lines about the source and what is made from it.
whole() {
    [ "$(head -n 1 "$work/$1")" = "P6 1280 960 255" ] || { echo "$1 is no picture of 1280 x 960"; exit 1; }
    [ "$(wc -c <"$work/$1")" -eq $((16 + 1280 * 960 * 3)) ] || { echo "$1 is not whole"; exit 1; }
}
try() {
    program=$(blocks sh | sed -n "s/.* $1 .*-o \\([^ ]*\\)\$/\\1/p")
    [ -n "$program" ] || { echo "README does not compile $1"; exit 1; }
    blocks sh | grep -e " $1 " -e "^\\./$program " >"$work/lines"
    (cd "$work" && sh -eux ./lines)
    whole "$2"
}
try example.c scene.ppm
case $languages in
    *CXX*)
        try example.cpp scene++.ppm
        cmp "$work/scene.ppm" "$work/scene++.ppm"
        ;;
esac

# The Python package, where the build has it; a build that should have it and does not install it fails.
if grep -q '^KRO_BUILD_PYTHON:BOOL=ON' "$build/CMakeCache.txt"; then
    python=$(sed -n 's/^_*Python_EXECUTABLE:[A-Z]*=//p' "$build/CMakeCache.txt" | grep -m 1 .)
    package=$(find "$work/prefix" -name '_kro.abi3.so')
    { blocks python; echo 'assert len(film) == 1 and deep.dtype == "uint16" and (canvas == 9).all() and not black.any()'; } >"$work/example.py"
    (cd "$work" && PYTHONPATH=$(dirname "$(dirname "$package")") "$python" -B example.py)
    whole python.ppm
    cmp "$work/scene.ppm" "$work/python.ppm"
else
    echo "the example in Python is not run: this build has no KRO_BUILD_PYTHON"
fi
if [ -x "$work/prefix/bin/kro" ]; then
    "$work/prefix/bin/kro" convert -q "$work/$frame" -a edge -O RGB8 --to ppm -o "$work/command.ppm"
    tail -c $((1280 * 960 * 3)) "$work/command.ppm" >"$work/command.pixels"
    tail -c $((1280 * 960 * 3)) "$work/scene.ppm" | cmp - "$work/command.pixels"
    echo "the command makes the same picture"
fi
