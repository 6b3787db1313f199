# Common parts of the scripts in this folder; bash, sourced. Needs nothing beyond a bare Debian 12.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

library_packages=(g++ cmake ninja-build pkg-config libfftw3-dev libgtest-dev)
host_packages=(libcli11-dev libvips-dev libexiv2-dev liblcms2-dev libjpeg62-turbo-dev libtiff-dev nlohmann-json3-dev)
test_packages=(libturbojpeg0-dev) # what tests compare with; without it they are skipped
browser_packages=(chromium)       # what a test looks at pages with; without it that test is skipped

package_packages=(dpkg-dev file lintian man-db mandoc) # what makes Debian packages and looks at them
docs_packages=(doxygen)
picture_packages=(python3-numpy python3-pil) # what makes and measures pictures for benchmarks and scripts/presets

install_mode=ask # ask, yes (--yes) or no (--no-install)

say() { printf '%s\n' "$*"; }
stop() { # CODE TEXT...
  local code=$1
  shift
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit "$code"
}

missing_packages() { # PACKAGE...
  local package
  for package; do
    if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)" != installed ]; then
      printf '%s ' "$package"
    fi
  done
}

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# Installs what is missing, after asking once. Online only when something is missing; exit code 3 where it
# stays missing.
need_packages() { # PACKAGE...
  local missing answer
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  local line="apt-get install --no-install-recommends ${missing% }"
  [ "$(id -u)" = 0 ] || line="sudo $line"
  if [ "$install_mode" = ask ] && [ -t 0 ]; then
    say "Missing packages: $missing"
    read -r -p "Install them now with '$line'? [Y/n] " answer
    case $answer in '' | [Yy]*) install_mode=yes ;; *) install_mode=no ;; esac
  fi
  if [ "$install_mode" != yes ]; then
    say "Packages are missing; install them with"
    say "  $line"
    exit 3
  fi
  if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
    stop 3 "neither root nor sudo here; as root: $line"
  fi
  say "Installing $missing"
  mkdir -p "$root/build"
  local log="$root/build/install.log"
  # shellcheck disable=SC2086
  if ! { as_root apt-get update -qq &&
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends $missing; } \
    >"$log" 2>&1; then
    tail -n 10 "$log" >&2
    stop 3 "the packages could not be installed; log: $log"
  fi
}

# Configures and builds a preset quietly; all targets when none is named.
build_preset() { # PRESET [TARGET...]
  local preset=$1
  shift
  local log="$root/build/$preset.log"
  mkdir -p "$root/build"
  say "Building the preset $preset (log: $log)"
  local targets=()
  [ $# -eq 0 ] || targets=(--target "$@")
  if ! (cd "$root" && cmake --preset "$preset" &&
    cmake --build --preset "$preset" -j "$(nproc)" "${targets[@]}") >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    stop 1 "the build failed; log: $log"
  fi
}

# Unpacks one file of a Debian package without installing it; kept in the build tree
# as $picture.
fetch_picture() { # PACKAGE FILE
  local folder=$root/build/pictures scratch
  picture=$folder/$2
  [ -s "$picture" ] && return
  say "Fetching $2 from the Debian package $1"
  mkdir -p "$folder"
  scratch=$(mktemp -d)
  if (cd "$scratch" && apt-get download -qq "$1" >/dev/null 2>&1 &&
    dpkg-deb --fsys-tarfile ./*.deb |
    tar -xf - --wildcards --no-anchored --transform 's|.*/||' "*/$2" && [ -s "$2" ]); then
    mv "$scratch/$2" "$picture"
    rm -rf "$scratch"
  else
    rm -rf "$scratch"
    stop 1 "cannot fetch $1 (offline, or apt-get update never ran); give a picture: scripts/demo photo.jpg"
  fi
}
