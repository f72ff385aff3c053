# scripts/packages.sh - sourced by the other scripts: installs missing Debian packages.
# SPDX-License-Identifier: MIT

# What the command line tool is built with, besides a compiler; docs/install.md names them too.
tool_packages=(libcli11-dev libfmt-dev nlohmann-json3-dev libarchive-dev libpng-dev libxxhash-dev zlib1g-dev)

# need PACKAGE...: makes sure that the packages are installed, as root or through sudo, and says what it does.
need()
{
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  echo "installing missing packages: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "cannot install them: not root, and there is no sudo. Install them and run this again." >&2
      return 1
    fi
    as_root=(sudo)
  fi
  # The package lists of a fresh machine are empty or old.
  "${as_root[@]}" apt-get update -qq &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
      "${missing[@]}" >/dev/null
}
