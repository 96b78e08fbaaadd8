# What the scripts share. Sourced by them; expects `root` to be the folder of the project.

build_packages="cmake ninja-build g++ libsqlite3-dev libpq-dev libcurl4-openssl-dev nlohmann-json3-dev libtomlplusplus-dev"
test_packages="libgtest-dev binutils postgresql-15 pgbouncer pkgconf etcd-server etcd-client patroni python3-etcd openssl zsh lowdown man-db mandoc"
check_packages="clang clang-format clang-tidy git"
package_packages="debhelper lowdown dpkg-dev fakeroot lintian git"
fuzz_packages="clang libclang-rt-14-dev"

# install PACKAGE...: installs the Debian packages that are missing. Services among them are not
# started, neither now nor with the system: the tests need their programs only. Prints on standard
# error only.
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
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -ec '
    policy=/usr/sbin/policy-rc.d
    if [ ! -e $policy ] && [ ! -L $policy ]; then
      trap "rm -f $policy" EXIT
      trap "exit 1" HUP INT TERM
      printf "#!/bin/sh\nexit 101\n" > $policy
      chmod 755 $policy
    fi
    units=/lib/systemd/system
    known=" $(cd $units 2> /dev/null && echo *.service) "
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "$@"
    command -v systemctl > /dev/null || exit 0
    for unit in $units/*.service; do
      case $known in *" ${unit##*/} "*) continue ;; esac
      systemctl disable --quiet "${unit##*/}" 2> /dev/null || :
    done' install "${missing[@]}" >&2
}

# build FOLDER TARGET...: builds, silently when there is nothing to do. Fails when the build fails
# (with pipefail, which every script sets).
build() {
  local folder=$1
  shift
  cmake --build "$folder" --target "$@" -- --quiet 2>&1 | sed '/^ninja: no work to do/d' >&2
}

# build_fuzzers: builds them in build-fuzz/, with what they start from in build-fuzz/seeds/: the
# files in tests/fuzz/seeds and a store that the program makes.
build_fuzzers() {
  local seeds=$root/build-fuzz/seeds change
  install $build_packages $fuzz_packages
  cmake -S "$root" -B "$root/build-fuzz" -G Ninja -DKNOB_FUZZ=ON -DKNOB_TESTS=OFF \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ >&2
  build "$root/build-fuzz" fuzzers
  rm -rf "$seeds"
  cp -r "$root/tests/fuzz/seeds" "$seeds"
  mkdir "$seeds/store"
  for change in '25 5' '74 text' '203 1'; do
    # shellcheck disable=SC2086 # the words of a change
    "$root/build-fuzz/bin/knob" $change -S "file:$seeds/store/settings.db" >&2
  done
}

# run_fuzzers FOLDER OPTION...: each with the options of libFuzzer. What it learns is kept in the
# folder. Ends with the first that finds a fault.
run_fuzzers() {
  local folder=$1 seeds name corpus
  shift
  for seeds in "$root"/build-fuzz/seeds/*; do
    name=$(basename "$seeds")
    corpus=$folder/$name
    mkdir -p "$corpus"
    echo "Fuzzing: $name" >&2
    "$root/build-fuzz/bin/fuzz_$name" -print_final_stats=1 -timeout=20 -max_len=8192 -seed=1 "$@" \
      "$corpus" "$seeds" 2>&1 | sed -E '/^(#|INFO|\tNEW_)/d'
  done
}
