# What the scripts share. Sourced by them; expects `root` to be the folder of the project.

build_packages="cmake ninja-build g++ libsqlite3-dev libpq-dev"
test_packages="libgtest-dev nlohmann-json3-dev postgresql-15 locales zsh lowdown man-db mandoc"
check_packages="clang clang-format clang-tidy git"

# install PACKAGE...: installs the Debian packages that are missing. Prints on standard error only.
install() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}" >&2
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# build FOLDER TARGET...: builds, silently when there is nothing to do. Fails when the build fails
# (with pipefail, which every script sets).
build() {
  local folder=$1
  shift
  cmake --build "$folder" --target "$@" -- --quiet 2>&1 | sed '/^ninja: no work to do/d' >&2
}
