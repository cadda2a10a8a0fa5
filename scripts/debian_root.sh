# Minimal systems of their own, made with debootstrap: sourced by test-on and test-packages. Needs root on a Debian system.

wxl_cache=${XDG_CACHE_HOME:-$HOME/.cache}/wxl

# Where this machine gets its Debian from: a mirror nearby, or behind its own wall, is the one that works.
debian_mirror() {
  local mirror
  mirror=$(apt-get indextargets --format '$(LABEL) $(BASE_URI)' 'Created-By: Packages' 2>/dev/null |
    sed -n 's|^Debian \(.*\)/dists/.*|\1|p' | head -n 1)
  echo "${WXL_DEBIAN_MIRROR:-${mirror:-http://deb.debian.org/debian}}"
}

# can_make_roots NAME: ends the script NAME with 77 where it cannot.
can_make_roots() {
  [ "$(id -u)" -eq 0 ] && [ -e /etc/debian_version ] && return
  echo "$1: skipped: needs root on a Debian system, to install into a system of its own" >&2
  exit 77
}

# make_root SUITE FOLDER: a minimal system there; what debootstrap made is kept for the next time.
make_root() {
  local suite=$1 root=$2 base
  base=$wxl_cache/$suite-$(dpkg --print-architecture).tar
  mkdir -p "$wxl_cache/archives-$suite/partial" "$root"
  if [ ! -e "$base" ]; then
    echo "making a minimal $suite, kept as $base"
    debootstrap --variant=minbase "$suite" "$root.new" "$(debian_mirror)" >"$root.log" ||
      { tail -n 20 "$root.log" >&2; return 1; }
    tar -C "$root.new" -cf "$base.$$" .
    mv "$base.$$" "$base"
    rm -rf "$root.new"
  fi
  tar -C "$root" -xpf "$base"
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  printf '127.0.0.1 localhost %s\n' "$(hostname)" >"$root/etc/hosts"
  # The machine's way to the mirror (proxies, clocks), and no service may start.
  apt-config dump | grep -E '^Acquire::(http|https|Check)[^ ]* ".+"' >"$root/etc/apt/apt.conf.d/90this-machine" || true
  printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
  chmod +x "$root/usr/sbin/policy-rc.d"
}

# inside ROOT COMMAND...: runs it there, with nothing of this machine's environment.
inside() {
  local root=$1
  shift
  chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}
