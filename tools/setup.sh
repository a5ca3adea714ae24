# Shared by ./run, ./test, tools/bench and .ci/run: the packages each needs, installing them, and
# configuring and building a preset. Sourced by bash with $root set to the checkout. Prints only on
# standard error: standard output belongs to the caller.

# Packages by purpose; each list is what the commands of that purpose use by name.
packages_build=(g++-multilib cmake ninja-build libcli11-dev)
packages_test=("${packages_build[@]}" googletest libgtest-dev)
packages_bench=("${packages_build[@]}" pkg-config python3 libboost-dev libfmt-dev libglib2.0-dev
  libicu-dev libunistring-dev libutfcpp-dev)
# The libraries of aarch64 alone: its GNU compiler cannot be installed beside g++-multilib.
packages_aarch64=(binutils-aarch64-linux-gnu clang-19 libsimde-dev libstdc++-12-dev-arm64-cross
  qemu-user-static)
packages_fuzz=("${packages_test[@]}" clang-19 libclang-rt-19-dev)
packages_check=("${packages_fuzz[@]}" "${packages_aarch64[@]}" abigail-tools binutils clang-14
  clang-format clang-tidy-19 codespell doxygen fish libboost-dev libc6-dbg libfmt-dev libutfcpp-dev lintian
  llvm-19 man-db mandoc pkg-config python3 python3-jsonschema
  shellcheck valgrind zsh)

say() { printf 'jxwem: %s\n' "$*" >&2; }
die() { say "$*"; exit 1; }

# Stores the given packages that are not installed in the array `missing`.
find_missing_packages() {
  local package
  missing=()
  for package in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
      missing+=("$package")
  done
}

# Installs the given packages that are missing. Needs neither root nor the network when none is.
ensure_packages() {
  local as_root=() missing
  command -v dpkg-query >/dev/null ||
    die 'this script sets up Debian 12; elsewhere install the tools named in README.md by hand.'
  find_missing_packages "$@"
  ((${#missing[@]})) || return 0
  if ((EUID != 0)); then
    command -v sudo >/dev/null ||
      die "missing packages: ${missing[*]} - run 'apt-get install ${missing[*]}' as root first."
    as_root=(sudo)
  fi
  say "installing ${missing[*]}"
  "${as_root[@]}" apt-get update -q >&2 </dev/null ||
    say 'the package lists could not be brought up to date; trying with those at hand'
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}" >&2 </dev/null ||
    die "could not install ${missing[*]}; is the network there?"
}

# drop_foreign_build PRESET: removes build/PRESET after a checkout was moved or copied: its files
# still name the sources at the old path.
drop_foreign_build() {
  local folder="$root/build/$1"
  [[ -f $folder/CMakeCache.txt ]] || return 0
  grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt" && return
  say "build/$1 is that of a checkout in another place; starting anew"
  rm -rf -- "$folder"
}

# configure PRESET [-DNAME=VALUE...]: writes build/PRESET's build files. Does nothing when they are
# newer than the presets and hold those values already.
configure() {
  local folder="$root/build/$1" setting is_due=0
  drop_foreign_build "$1" || return
  [[ $folder/build.ninja -nt $root/CMakePresets.json ]] || is_due=1
  for setting in "${@:2}"; do
    setting=${setting#-D}
    grep -q "^${setting%%=*}:[A-Z]*=${setting#*=}\$" "$folder/CMakeCache.txt" 2>/dev/null || is_due=1
  done
  ((is_due)) || return 0
  say "configuring build/$1"
  mkdir -p "$folder"
  (cd "$root" && cmake --preset "$@") >"$folder/configure.log" 2>&1 </dev/null && return
  cat "$folder/configure.log" >&2
  return 1
}

# build PRESET [TARGET...]: shows progress for a first build, only errors for later ones.
build() {
  local folder="$root/build/$1" quiet=(--quiet)
  local stamp="$folder/.built${2:+.$2}"
  if [[ ! -f $stamp ]]; then
    say "building in build/$1"
    quiet=()
  fi
  cmake --build "$folder" ${2:+--target "${@:2}"} -- "${quiet[@]}" </dev/null 2>&1 |
    sed -u '/^ninja: no work to do\.$/d' >&2
  ((PIPESTATUS[0] == 0)) && touch "$stamp"
}
