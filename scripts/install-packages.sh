#!/bin/bash
# Installs the Debian packages that building, running and testing need and that are missing. Says which.
set -eu
cd "$(dirname "$0")/.."

missing=()
while read -r package; do
  # A machine may carry a tool without Debian's package of it.
  if [ "$package" = nodejs ] && command -v node >/dev/null; then continue; fi
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done < <(grep -v '^#' scripts/packages.txt)
[ ${#missing[@]} -gt 0 ] || exit 0

command -v apt-get >/dev/null || {
  echo "These packages are missing, and there is no apt-get to install them: ${missing[*]}" >&2
  exit 1
}
as_root=()
[ "$(id -u)" = 0 ] || as_root=(sudo)
echo "Installing: ${missing[*]}"
for attempt in 1 2 3; do
  if "${as_root[@]}" apt-get update -q >/dev/null &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -yq --no-install-recommends "${missing[@]}" >/dev/null; then
    exit 0
  fi
  echo "Attempt $attempt to install them failed." >&2
  sleep 5
done
exit 1
