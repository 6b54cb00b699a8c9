#!/usr/bin/env bash
# Installs, with apt-get, the Debian packages of tools/debian-packages that are
# missing: "setup.sh build" those to build and run the engine, "setup.sh test"
# those and the ones the test suite needs. Does nothing when all are there.
set -euo pipefail
cd "$(dirname "$0")/.."
want=${1:-build}
case $want in
    build) kinds="build" ;;
    test) kinds="build test" ;;
    *) echo "usage: tools/setup.sh [build|test]" >&2; exit 2 ;;
esac

missing=()
while read -r kind package; do
    [[ -z $kind || $kind == \#* ]] && continue
    [[ " $kinds " == *" $kind "* ]] || continue
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ $status == "install ok installed" ]] || missing+=("$package")
done < tools/debian-packages
(( ${#missing[@]} == 0 )) && exit 0

echo "Installing the missing Debian packages: ${missing[*]}"
if (( EUID == 0 )); then
    sudo=()
elif command -v sudo >/dev/null; then
    sudo=(sudo)
else
    echo "Not root and no sudo: as root, run" >&2
    echo "    apt-get install ${missing[*]}" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update
"${sudo[@]}" apt-get install -y "${missing[@]}"
