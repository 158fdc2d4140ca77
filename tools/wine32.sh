#!/usr/bin/env bash
# A 32-bit Wine in a root folder of its own, for the 32-bit Windows programs: the machine's packages stay untouched.
#   wine32.sh make             makes the root where it is missing (root rights, the network, about 100 s and 1 GB, once)
#   wine32.sh with COMMAND...  runs a command with /proc, /dev, /tmp and this tree bound into the root
#   wine32.sh in COMMAND...    below "with": runs a command inside the root, in the current folder
#   wine32.sh compiler         says which command compiles C for the root, outside of it
# The root stays in /var/cache/vexa-wine32, or where VEXA_WINE32_ROOT says. "with" binds in a mount namespace and runs in a
# process namespace: however it ends, nothing stays mounted and no process stays behind.
set -u
tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
root=${VEXA_WINE32_ROOT:-/var/cache/vexa-wine32}
alone=(unshare --mount --pid --fork --kill-child)

# The mirror of the running release that this machine's apt takes its packages from.
mirror() {  # RELEASE
  apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(CREATED_BY) $(REPO_URI)' |
    sed -n "s/^$1 main Packages //p" | head -1
}

make_root() {
  local release from
  [ -d "$root" ] && return 0
  [ "$(id -u)" = 0 ] || { echo "only root can make it"; return 1; }
  release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  from=$(mirror "$release")
  [ -n "$from" ] || { echo "apt knows no mirror of $release"; return 1; }
  rm -rf "$root.new"
  # libc6-dev: the shim of the window tests' line is compiled against it.
  "${alone[@]}" debootstrap --arch=i386 --variant=minbase --include=wine,wine32,libc6-dev "$release" "$root.new" "$from" 2>&1 &&
    rm -f "$root.new"/var/cache/apt/archives/*.deb && mv "$root.new" "$root"
}

case ${1:-} in
  make)
    mkdir -p "$(dirname "$root")"
    exec 9>"$root.lock" || exit 1
    flock 9
    make_root && "$0" with "$0" in true
    ;;
  with)
    shift
    # The inner shell stays: as the first process of its namespace, a command would not be told of its display.
    "${alone[@]}" bash -c '
      root=$1 tree=$2
      shift 2
      mount -t proc proc "$root/proc" && mount --rbind /dev "$root/dev" || exit 1
      for folder in /tmp "${TMPDIR:-/tmp}" "$tree"; do
        mkdir -p "$root$folder" && mount --bind "$folder" "$root$folder" || exit 1
      done
      "$@"
      exit $?' with "$root" "$tree" "$@" <&0 &
    child=$!
    # Waiting for its child, unshare itself does not listen.
    trap 'kill -KILL $child; exit 143' TERM INT HUP
    wait $child
    ;;
  in)
    shift
    exec chroot "$root" env -C "$PWD" HOME=/root "$@"
    ;;
  compiler)
    # With times of 64 bits, as the Wine of this root is compiled: its calls have other names then.
    echo "clang --target=i386-linux-gnu --sysroot=$root -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64"
    ;;
  *)
    sed -n '2,8s/^# //p' "$0"
    exit 2
    ;;
esac
