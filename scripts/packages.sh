# Installs Debian packages that are missing; to be sourced. As root, or through sudo.
#   install_missing PACKAGE...
install_missing() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo > /dev/null || { echo "please install as root: apt-get install ${missing[*]}" >&2; return 1; }
    as_root=(sudo)
  fi
  echo "installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends "${missing[@]}" > /dev/null
}

build_packages=(g++ cmake ninja-build pkg-config libvips-dev libcli11-dev nlohmann-json3-dev libexiv2-dev libtiff-dev
  fonts-dejavu-core)
test_packages=(clang-14 clang-format-14 clang-tidy-14 doctest-dev libvips-tools libimage-exiftool-perl python3 git)
