#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Zandorel need, when they are missing.
set -euo pipefail
packages=(cmake ninja-build g++ pkg-config libsqlite3-dev sqlite3 libgtest-dev libgmock-dev
          libbenchmark-dev libcli11-dev nlohmann-json3-dev qt6-base-dev fonts-liberation
          libpq-dev postgresql qt6-translations-l10n poppler-utils)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}"
fi
