#!/usr/bin/env bash
# try-packages-inside.sh ROOT PACKAGES: installs the packages in the clean root ROOT and tries them there.
set -euo pipefail
root=$1 packages=$2
mkdir "$root/packages"
find "$packages" -name 'syscmd*.deb' ! -name '*-dbgsym_*' -exec cp -t "$root/packages" {} +
# A root of its own, with mounts of its own: a private device wants both.
unshare --mount --pid --fork --kill-child bash -euo pipefail -s "$root" <<'TXT'
mount --make-rprivate /
mount --bind "$1" "$1"
mount -t proc proc "$1/proc"
for folder in dev sys; do # journald wants a control group file system
    mount --rbind "/$folder" "$1/$folder"
done
exec chroot "$1" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive HOME=/root \
    bash -euo pipefail -s <<'INSIDE'
apt-get -qq install -y --no-install-recommends /packages/*.deb cmake g++ make pkg-config >/var/log/install.log 2>&1 || {
    tail -n 20 /var/log/install.log
    exit 1
}
cd /tmp
cp -r /usr/share/doc/syscmd-dev/examples .
cmake -S examples -B built >log 2>&1 && cmake --build built >>log 2>&1 || { cat log && exit 1; }
gcc examples/settings.c -o settings $(pkg-config --cflags --libs liblst)
echo 'colour = blue' >conf
[ "$(./settings conf colour) $(built/settings conf colour)" = 'blue blue' ]
device --quiet -- broker run whoami --as alice:secret --plugin built/libwhoami.so |
    grep -F 'CODE_SUCCEED, "owner of a device of alice"'
broker check "$(find /usr/lib -path '*/syscmd/libsyscmd.so')"
device-demo --full | tail -n 1 | grep -Fx 'demo: all went as it should'
INSIDE
TXT
