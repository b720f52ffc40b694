# What run and test install with apt; sourced by them.

# The sound plug-in, the media back end that measures how long a file is (WAV, MP3 and AAC), RTSP with TLS for talks
# to cameras, and what the window is made of.
runtime_packages=(
    libqt5multimedia5-plugins libqt5sql5-sqlite
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav glib-networking
    qml-module-qtqml qml-module-qtquick2 qml-module-qtquick-window2 qml-module-qtquick-layouts
    qml-module-qtquick-controls2 qml-module-qtquick-templates2 qml-module-qt-labs-platform fonts-dejavu-core
)

build_packages=(
    g++ cmake ninja-build pkg-config
    qtbase5-dev qtmultimedia5-dev qtdeclarative5-dev qtquickcontrols2-5-dev
    qttools5-dev qttools5-dev-tools
    libavcodec-dev libavformat-dev libavutil-dev libswresample-dev libswscale-dev
    libsndfile1-dev libboost-dev libboost-thread-dev libopencore-amrnb-dev libsodium-dev libssl-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
)

# A sound server, for machines without sound.
sound_packages=(
    pulseaudio
)

# wsdd answers probes of cameras, in a network that iproute2 makes for it; libonvif asks the camera of the tests.
test_packages=(
    libgstrtspserver-1.0-dev
    qml-module-qttest qtdeclarative5-dev-tools xvfb xdotool clang-format lld python3
    wsdd iproute2 libonvif-dev libxml2-dev
    "${sound_packages[@]}" pulseaudio-utils
)

# What makes and checks the reference.
docs_packages=(
    doxygen python3
)

# mumble-server is what bench_relay compares with.
bench_packages=(
    libbenchmark-dev libbcg729-dev libgstrtspserver-1.0-dev xvfb mumble-server
)

# A linker that is quick, for tests/mutants/run.py.
mutants_packages=(
    lld
)

# A Windows build and a Wine to run it; the libraries come from tools/windows/toolchain.sh.
windows_packages=(
    g++-mingw-w64-x86-64-posix wine64 nasm tcl perl make autoconf automake libtool dpkg-dev xz-utils clang unzip
)

# Installs the packages given that are missing.
install_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    echo "== Installing ${missing[*]}" >&2
    command -v apt-get >/dev/null || {
        echo "This is not a Debian system. Install by hand: ${missing[*]}" >&2
        return 1
    }
    local sudo=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null || {
            echo "Run as root or install sudo: packages are missing (${missing[*]})." >&2
            return 1
        }
        sudo=(sudo)
    fi
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
            "${missing[@]}" >/dev/null || {
        echo "apt-get failed. Check the network and the package sources, then run this again." >&2
        return 1
    }
}

# build_preset PRESET [OPTION...] [-- TARGET...]: configures a preset and builds it, or what is named of it, with the
# build tool's progress on standard error: a program that is run afterwards has standard output to itself.
build_preset() {
    local preset=$1 options=() targets=()
    shift
    while (($#)) && [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    (($# < 2)) || targets=(--target "${@:2}")
    echo "== Building ($preset)" >&2
    cmake --preset "$preset" "${options[@]}" >"/tmp/voicedesk-configure-$preset-$$.log" 2>&1 || {
        cat "/tmp/voicedesk-configure-$preset-$$.log" >&2
        return 1
    }
    rm -f "/tmp/voicedesk-configure-$preset-$$.log"
    cmake --build --preset "$preset" "${targets[@]}" >&2
}
