#!/usr/bin/env bash
# Installs what the build needs on a fresh Debian machine. Does nothing when all is present.
# With the argument "windows", also what the Windows build needs: mingw-w64,
# the GoogleTest sources and Wine, which runs its programs here.
set -euo pipefail

packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev liburing-dev libboost-dev fio
          doxygen dpkg-dev lintian file  # the API reference and the Debian packages (built and checked)
          clang libclang-rt-14-dev  # clang and its libFuzzer runtime: the fuzz preset
          libgtk-3-dev xvfb xauth xdotool imagemagick)  # the desktop module, and its tests in real windows
if [ "${1:-}" = windows ]; then
  packages+=(g++-mingw-w64-x86-64-posix googletest wine64 zip unzip)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
