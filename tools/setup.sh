# shellcheck shell=bash
# What ./run and ./test share: installing missing packages, configuring and building.
# Sourced by bash scripts in strict mode. Whatever fails says why and ends the script.

projectRoot=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# The command line that builds are started through; empty for none.
launcher=()

die() {
  printf '%s\n' "$@" >&2
  exit 1
}

# Prints the lines of the package lists NAME..., without comments: package, check, purpose.
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
  local package check purpose
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    requireByHand "$@"
    return
  fi

  local -A installed=()
  local -a missing=()
  # shellcheck disable=SC2016  # dpkg-query, not the shell, expands this format
  while read -r package; do
    installed[$package]=1
  done < <(packageLines "$@" | cut -d' ' -f1 |
    xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null | sed -n 's/^installed //p')
  while read -r package check purpose; do
    if [[ ! ${installed[$package]:-} ]]; then
      ((${#missing[@]})) || echo "Installing with apt-get:"
      missing+=("$package")
      printf '  %-23s %s\n' "$package" "$purpose"
    fi
  done < <(packageLines "$@")
  ((${#missing[@]})) || return 0

  local -a asRoot=(env)
  if ((EUID != 0)); then
    command -v sudo >/dev/null || die \
      "Installing needs root and there is no sudo here. As root, run:" \
      "  apt-get update && apt-get install --no-install-recommends ${missing[*]}"
    asRoot=(sudo env)
  fi
  asRoot+=(DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600)
  "${asRoot[@]}" update || die "apt-get update failed."
  "${asRoot[@]}" install -y --no-install-recommends "${missing[@]}" >/dev/null ||
    die "apt-get could not install ${missing[*]}."
}

# On a system without apt-get: names what is missing from the lists NAME... and ends.
requireByHand() {
  local package check purpose
  local -a missing=()
  while read -r package check purpose; do
    isPresent "$check" || missing+=("  ${check/:/ } (in Debian: $package) $purpose")
  done < <(packageLines "$@")
  ((${#missing[@]} == 0)) || die \
    "This system has no apt-get, so nothing was installed. Please install what is missing:" \
    "${missing[@]}"
}

# Builds TARGET... of PRESET, configuring first where that was not done since the presets changed.
buildPreset() {
  local preset=$1
  local folder=$projectRoot/build/$preset
  shift
  if [[ ! -e $folder/build.ninja || $projectRoot/CMakePresets.json -nt $folder/CMakeCache.txt ]]; then
    (cd "$projectRoot" && cmake --preset "$preset") || die "Configuring '$preset' failed."
    touch "$folder/CMakeCache.txt" "$folder/build.ninja"
  fi
  "${launcher[@]}" cmake --build "$folder" --target "$@" || die "Building '$preset' failed."
}
