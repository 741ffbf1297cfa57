#!/bin/sh
# The packages in a Debian that has nothing else: what they say they need is enough to run the commands, to build foreign
# projects by pkg-config, find_package and add_subdirectory, shared and static; removed, they leave nothing. Takes root,
# debootstrap, apt's sources as they are set up here, and some ten minutes.
# usage: check-bare-root.sh PACKAGES SOURCE
# shellcheck disable=SC2016 # apt expands $(SITE) and its like
set -eu
packages=$(cd "$1" && pwd) source=$(cd "$2" && pwd)
[ "$(id -u)" -eq 0 ] || { echo "check-bare-root: only root can make a root folder"; exit 1; }
work=$(mktemp -d)
root=$work/root
trap 'rm -rf --one-file-system "$work"' EXIT
step() { echo "-- $*"; }
quietly() { "$@" >"$work/log" 2>&1 || { tail -n 30 "$work/log"; exit 1; }; }
# No variable of ours: compiler launchers, flags and paths of this machine do not exist in there.
inside() {
    env -i LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive HOME=/tmp PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$root" "$@"
}

# Where this machine takes Debian from.
# shellcheck disable=SC1091 # a file of the system's
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
site=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Origin: Debian' "Codename: $codename" | head -n 1)
[ -n "$site" ] || { echo "check-bare-root: apt has no source of Debian $codename"; exit 1; }
step "Debian $codename by debootstrap"
quietly debootstrap --variant=minbase "$codename" "$root" "$site"
apt-get indextargets --format 'deb $(SITE) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    sort -u >"$root/etc/apt/sources.list"
apt-config dump | grep -E '^Acquire::(Check-|http)' >"$root/etc/apt/apt.conf.d/90as-around" || true
cp /etc/resolv.conf "$root/etc/resolv.conf"
mkdir "$root/packages" "$root/tmp/tried"
cp "$packages"/*.deb "$root/packages"
quietly inside apt-get update
cd "$root/packages"
inside find / -xdev -name '*kro*' -not -path '/proc/*' -not -path '/packages/*' | sort >"$work/before"

step "the commands, with what they need and no more"
set -- libkro0_*.deb kro-tools_*.deb
quietly inside apt-get install -y --no-install-recommends "/packages/$1" "/packages/$2"
inside kro selftest | tail -n 1
inside kro-bench --list >/dev/null
printf 'P6 64 48 255\n' >"$root/tmp/tried/scene.ppm"
seq 99999 | head -c $((64 * 48 * 3)) >>"$root/tmp/tried/scene.ppm"
inside sh -euc 'cd /tmp/tried && kro mosaic -q scene.ppm -f BayerRG12p -o frame_64x48_BayerRG12p.raw &&
    kro convert -q frame_64x48_BayerRG12p.raw -o picture.png && kro convert -q frame_64x48_BayerRG12p.raw -o picture.jpg'
[ "$(head -c 4 "$root/tmp/tried/picture.png" | tail -c 3)" = PNG ] || { echo "kro convert made no PNG file"; exit 1; }

step "the Python package and the plugin for GStreamer"
for package in python3-kro gstreamer1.0-kro; do
    set -- "$package"_*.deb
    quietly inside apt-get install -y --no-install-recommends "/packages/$1"
done
inside python3 -c "import kro; assert kro.convert(bytes(16), 'BayerRG8', (4, 4)).shape == (4, 4, 3)"
quietly inside apt-get install -y --no-install-recommends gstreamer1.0-tools
quietly inside gst-inspect-1.0 krodemosaic

step "foreign projects, with the development package"
set -- libkro-dev_*.deb
quietly inside apt-get install -y --no-install-recommends "/packages/$1" g++ cmake make pkg-config binutils
mkdir "$root/kro"
(cd "$source" && { git ls-files -z 2>/dev/null || find CMakeLists.txt cmake include src tests -type f -print0; } |
    tar -c --null --files-from=-) | tar -x -C "$root/kro"
inside /kro/tests/check-prefix.sh /usr /kro/tests/package "C CXX" cc c++ ""

step "a foreign project around kro's sources"
inside sh -euc 'cd /tmp/tried && cmake -S /kro/tests/package -B around -DCLIENT_KRO=subdirectory -DCLIENT_KRO_SOURCE=/kro &&
    cmake --build around --parallel "$1" && ./around/client-C && ./around/client-CXX' sh "${KRO_JOBS:-$(nproc)}" \
    >"$work/log" 2>&1 || { tail -n 30 "$work/log"; exit 1; }

step "nothing is left"
rm -rf "$root/kro" "$root/tmp/tried"
quietly inside apt-get purge -y 'libkro*' kro-tools python3-kro gstreamer1.0-kro
inside find / -xdev -name '*kro*' -not -path '/proc/*' -not -path '/packages/*' | sort >"$work/after"
diff "$work/before" "$work/after"
echo "the packages serve a bare Debian $codename"
