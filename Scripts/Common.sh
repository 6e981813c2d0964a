# Sourced by ./demo and ./test: says what is going on, and installs Debian packages that are missing.
# shellcheck shell=bash disable=SC2034

step() { printf '\n==> %s\n' "$*"; }

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Runs a command; shows its output only if it fails.
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        fail "this failed: $*"
    fi
    rm -f "$log"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "needs root for: $* (become root, or install sudo)"
    fi
}

# Installs those of the named packages that are not there yet.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    if [ "${#missing[@]}" -eq 0 ]; then
        echo "all ${#} Debian packages are installed"
        return
    fi
    echo "installing ${missing[*]}"
    # Another installation that is under way is waited for.
    quietly as_root apt-get -o DPkg::Lock::Timeout=600 update
    quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y \
        --no-install-recommends "${missing[@]}"
}

# What it takes to build the libraries and boardmap.
build_packages=(g++ cmake ninja-build ccache pkg-config libboost-log-dev libcli11-dev libgcrypt20-dev
    libjs-dygraphs libjs-leaflet libtomlplusplus-dev nlohmann-json3-dev libpng-dev libstb-dev libtiff-dev zlib1g-dev)
# What it takes to rip the demo page.
page_packages=(ghostscript netpbm)
# What it takes to check and test.
test_packages=(abigail-tools binutils clang clang-format clang-tidy dpkg-dev file fish git groff-base
    libboost-context-dev libc++-dev libgmock-dev libgtest-dev librapidcheck-dev parallel python3 shellcheck valgrind zsh)
# What it takes to look at a report as a browser shows it.
browser_packages=(chromium chromium-driver python3-selenium)
# What it takes to count what the tests run, and to look for inputs that break something.
coverage_packages=(gcovr)
fuzz_packages=(libclang-rt-dev)
# What it takes to measure, peers included.
bench_packages=(bitshuffle libbenchmark-dev libboost-dev libtbb-dev linux-perf python3-matplotlib python3-numpy)
# What it takes to build for 64-bit Windows, third-party libraries included, and to run the result.
windows_packages=(binutils-mingw-w64-x86-64 bzip2 clang dpkg-dev file g++-mingw-w64-x86-64-posix googletest libboost-tools-dev
    libgcrypt-mingw-w64-dev libgpg-error-mingw-w64-dev libz-mingw-w64-dev util-linux wine wine64 xz-utils zip unzip)
# What it takes to build for 64-bit ARM and to run the result.
arm_packages=(dpkg-dev g++-aarch64-linux-gnu qemu-user-static)

jobs=$(nproc)
