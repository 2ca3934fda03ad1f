# shellcheck shell=bash
# What ./run and ./test share: installing missing packages, configuring and building.
# Sourced by bash scripts in strict mode. Whatever fails says why and ends the script.

projectRoot=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# The command line that builds are started through; empty for none.
launcher=()

# Whether the tests are to be built too, which need more packages; empty for no.
withTests=

die() {
  printf '%s\n' "$@" >&2
  exit 1
}

# Prints the lines of the package lists NAME..., without comments: package or packages, check, purpose.
packageLines() {
  local name
  for name in "$@"; do
    grep --no-filename '^[^#]' "$projectRoot/packaging/packages/$name.txt"
  done
}

# Is there what CHECK of a package list names? Needed only where packages cannot be looked up.
isPresent() {
  local kind=${1%%:*} what=${1#*:}
  case $kind in
    command) command -v "$what" ;;
    module) pkg-config --exists "$what" ;;
    header) c++ -E -x c++ - <<<"#include <$what>" ;;
    file) test -e "$what" ;;
    python) /usr/bin/python3 -c "import $what" ;;
    *) die "packaging/packages: '$1' is no check that is known." ;;
  esac >/dev/null 2>&1
}

# Makes sure that the packages of the lists NAME... are installed.
requirePackages() {
  local package packages check purpose
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    requireByHand "$@"
    return
  fi

  local -A installed=()
  local -a missing=()
  # shellcheck disable=SC2016  # dpkg-query, not the shell, expands this format
  while read -r package; do
    installed[$package]=1
  done < <(packageLines "$@" | cut -d' ' -f1 | tr '|' '\n' |
    xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null | sed -n 's/^installed //p')
  while read -r packages check purpose; do
    package=${packages%%|*}
    [[ ! ${installed[$package]:-} ]] || continue
    if [[ $packages == *\|* ]]; then
      package=$(firstOffered "$packages") || exit
      [[ ! ${installed[$package]:-} ]] || continue
    fi
    ((${#missing[@]})) || echo "Installing with apt-get:"
    missing+=("$package")
    printf '  %-23s %s\n' "$package" "$purpose"
  done < <(packageLines "$@")
  ((${#missing[@]})) || return 0

  requireRoot "apt-get update && apt-get install --no-install-recommends ${missing[*]}"
  aptGet update || die "apt-get update failed."
  aptGet install -y --no-install-recommends "${missing[@]}" >/dev/null ||
    die "apt-get could not install ${missing[*]}."
}

# Prints the first of the PACKAGE|PACKAGE... that this release of the system has.
firstOffered() {
  local package
  # A system that has never looked, or has forgotten, knows only what is installed.
  if ! compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null; then
    requireRoot "apt-get update"
    aptGet update >&2 || die "apt-get update failed."
  fi
  for package in ${1//|/ }; do
    if apt-cache show --no-all-versions "$package" >/dev/null 2>&1; then
      printf '%s\n' "$package"
      return
    fi
  done
  die "This system has none of the packages ${1//|/, }."
}

# Ends, saying that COMMAND has to be run first, where this user cannot become root.
requireRoot() {
  ((EUID == 0)) || command -v sudo >/dev/null || die \
    "Installing needs root and there is no sudo here. As root, run:" "  $1"
}

# Runs apt-get as root.
aptGet() {
  local -a asRoot=(env)
  ((EUID == 0)) || asRoot=(sudo env)
  "${asRoot[@]}" DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600 "$@"
}

# On a system without apt-get: names what is missing from the lists NAME... and ends.
requireByHand() {
  local packages check purpose
  local -a missing=()
  while read -r packages check purpose; do
    isPresent "$check" || missing+=("  ${check/:/ } (in Debian: ${packages//|/ or }) $purpose")
  done < <(packageLines "$@")
  ((${#missing[@]} == 0)) || die \
    "This system has no apt-get, so nothing was installed. Please install what is missing:" \
    "${missing[@]}"
}

# Builds TARGET... of PRESET, configuring first where that was not done since the presets changed, or
# without the tests if $withTests.
buildPreset() {
  local preset=$1
  local folder=$projectRoot/build/$preset
  local -a options=()
  shift
  [[ ! $withTests ]] || options=(-D BUILD_TESTING=ON)
  if ! isConfigured "$folder"; then
    (cd "$projectRoot" && cmake --preset "$preset" "${options[@]}") || die "Configuring '$preset' failed."
    touch "$folder/CMakeCache.txt" "$folder/build.ninja"
  fi
  "${launcher[@]}" cmake --build "$folder" --target "$@" || die "Building '$preset' failed."
}

isConfigured() {
  [[ -e $1/build.ninja && ! $projectRoot/CMakePresets.json -nt $1/CMakeCache.txt ]] || return
  [[ ! $withTests ]] || grep -q '^BUILD_TESTING:[A-Z]*=ON$' "$1/CMakeCache.txt"
}
