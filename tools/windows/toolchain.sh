#!/usr/bin/env bash
# Makes what a Windows build on Debian needs, from Debian's packages and source packages: Qt, the codec and sound
# libraries, TLS and passwords, Boost, and a Wine to run the result. Each finished step leaves a mark and is
# not done again; a broken one goes on where it can.
set -euo pipefail

usage() {
    cat <<'TEXT'
usage: tools/windows/toolchain.sh FOLDER [STEP...]

Makes the Windows tool chain in FOLDER: 76 minutes on two busy cores, 4 GB while it is made and 1 GB afterwards.
Steps, in order; all of them without a name:

  packages sources sqlite openssl qtbase qtmultimedia lame ffmpeg boost amr sndfile sodium runtime wine

Remove FOLDER/done/STEP to do one again. JOBS=n sets how many compilers run at once, KEEP=1 keeps the sources.
TEXT
}

case ${1-} in
"" | -h | --help) usage; exit 64 ;;
esac
mkdir -p "$1"
root=$(cd "$1" && pwd)
shift
jobs=${JOBS:-$(nproc)}
host=x86_64-w64-mingw32
gcc=$host-gcc-posix # the variant with threads, whatever the alternatives say
gxx=$host-g++-posix
mkdir -p "$root"/{log,done}
unset LIBRARY_PATH CPATH C_INCLUDE_PATH CPLUS_INCLUDE_PATH PKG_CONFIG_PATH QMAKESPEC CFLAGS CXXFLAGS LDFLAGS MAKEFLAGS || true
export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive

# quietly NAME COMMAND...: the output goes to a log, whose end is shown when the command fails
quietly() {
    local name=$1
    shift
    "$@" >"$root/log/$name.log" 2>&1 || {
        tail -30 "$root/log/$name.log" >&2
        echo "The tool chain's step failed: $name; all of its output is in $root/log/$name.log" >&2
        exit 1
    }
}

# The unpacked sources of a package.
sources_of() {
    local folder
    for folder in "$root/src/$1"-*/; do
        [[ -d $folder ]] && { echo "${folder%/}"; return; }
    done
    echo "no sources of $1 in $root/src" >&2
    return 1
}

# enter NAME: the build folder of a step
enter() {
    mkdir -p "$root/build/$1"
    cd "$root/build/$1"
}

step_packages() {
    source "$(dirname "${BASH_SOURCE[0]}")/../dependencies.sh"
    install_packages "${build_packages[@]}" "${windows_packages[@]}"
}

step_sources() {
    # A list of source archives of its own; the machine's settings stay as they are.
    local apt=$root/apt file package version
    mkdir -p "$apt/parts" "$apt/lists/partial" "$apt/cache/archives/partial"
    for file in /etc/apt/sources.list.d/*.sources; do
        [[ -e $file ]] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$apt/parts/$(basename "$file")"
    done
    [[ -e /etc/apt/sources.list ]] && sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$apt/parts/main.list"
    local options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$apt/parts"
        -o "Dir::State::lists=$apt/lists" -o "Dir::Cache=$apt/cache")
    ((EUID != 0)) || options+=(-o APT::Sandbox::User=root)
    quietly sources-update apt-get "${options[@]}" update
    cd "$root/src"
    for package in qtbase-opensource-src qtmultimedia-opensource-src ffmpeg boost1.74 \
        sqlite3 lame opencore-amr libsndfile libsodium openssl; do
        [[ -e $package.whole ]] && continue
        rm -rf "${package:?}"-*/ # a half-unpacked one must not be taken for a whole one
        # The newest that the archive really has.
        for version in $(apt-cache "${options[@]}" showsrc "$package" | sed -n 's/^Version: //p' | sort -rV); do
            apt-get "${options[@]}" source "$package=$version" >"$root/log/sources-$package.log" 2>&1 && break
            rm -rf "${package:?}"-*/
        done
        sources_of "$package" >/dev/null 2>&1 || {
            tail -3 "$root/log/sources-$package.log" >&2
            echo "The archive does not give the sources of $package now. Try again later, or get them elsewhere: unpack" >&2
            echo "them to $root/src/$package-VERSION and make the file $root/src/$package.whole." >&2
            exit 1
        }
        touch "$package.whole"
    done
}

step_sqlite() {
    # Debian's Qt comes without the SQLite that Qt bundles.
    local sqlite qt
    sqlite=$(sources_of sqlite3)
    qt=$(sources_of qtbase-opensource-src)
    enter sqlite
    quietly sqlite-configure "$sqlite/configure"
    quietly sqlite make sqlite3.c
    mkdir -p "$qt/src/3rdparty/sqlite"
    cp sqlite3.c sqlite3.h sqlite3ext.h "$qt/src/3rdparty/sqlite/"
}

step_qtbase() {
    local qt
    qt=$(sources_of qtbase-opensource-src)
    chmod +x "$qt/configure"
    # Names that only a file system without capitals finds.
    sed -i 's/-lSecur32/-lsecur32/; s/-lCrypt32/-lcrypt32/' "$qt/src/network/ssl/ssl.pri"
    enter qtbase
    # No tablets: Debian takes their headers out. TLS is OpenSSL's, as on Linux: Qt's way to Windows' own one does
    # not get a server's certificate through Wine.
    [[ -e Makefile ]] || MAKEFLAGS=-j$jobs OPENSSL_LIBS="-lssl -lcrypto -lws2_32 -lcrypt32" \
        quietly qtbase-configure "$qt/configure" -opensource -confirm-license \
        -prefix "$root/qt" -hostprefix "$root/qt" \
        -platform linux-g++ -xplatform win32-g++ -device-option "CROSS_COMPILE=$host-" \
        -release -shared -no-opengl -no-direct2d -no-icu -no-dbus -no-glib -no-fontconfig -no-widgets \
        -qt-zlib -qt-pcre -qt-libpng -qt-libjpeg -qt-freetype -qt-harfbuzz -qt-doubleconversion -qt-sqlite \
        -sql-sqlite -no-sql-odbc -no-sql-mysql -no-sql-psql -openssl-linked "-I$root/libs/include" "-L$root/libs/lib" \
        -no-feature-tabletevent -nomake examples -nomake tests -no-compile-examples -v
    quietly qtbase make "-j$jobs"
    quietly qtbase-install make install
}

# qt_module PACKAGE: a further module of Qt
qt_module() {
    local sources
    sources=$(sources_of "$1")
    enter "$1"
    [[ -e Makefile ]] || quietly "$1-qmake" "$root/qt/bin/qmake" "$sources"
    quietly "$1" make "-j$jobs"
    quietly "$1-install" make install
}

step_qtmultimedia() { qt_module qtmultimedia-opensource-src; }

step_lame() { autotools_library lame --disable-shared --enable-static --disable-frontend --disable-decoder; }

step_ffmpeg() {
    local sources
    # The MP3 encoder serves the tests, which make their sound files themselves.
    sources=$(sources_of ffmpeg)
    enter ffmpeg
    [[ -e ffbuild/config.mak ]] || quietly ffmpeg-configure "$sources/configure" --prefix="$root/libs" \
        --enable-cross-compile --cross-prefix=$host- --arch=x86_64 --target-os=mingw32 --cc=$gcc \
        --enable-shared --disable-static --disable-programs --disable-doc --disable-debug \
        --disable-everything --disable-autodetect --disable-network --disable-avdevice --disable-avfilter \
        --disable-postproc --enable-avcodec --enable-avformat --enable-avutil --enable-swresample --enable-swscale \
        --enable-decoder=aac,aac_latm,amrnb,mp3,mp3float,flac,vorbis,opus,alac,g726,g726le,g729 \
        --enable-decoder=pcm_mulaw,pcm_alaw,pcm_s16le,pcm_s16be,pcm_u8,pcm_s24le,pcm_s24be,pcm_s32le,pcm_f32le \
        --enable-decoder=h264,mpeg4,mjpeg --enable-encoder=aac,pcm_mulaw,pcm_alaw,pcm_s16le,flac,mpeg4 \
        --enable-encoder=mjpeg,mp2,libmp3lame --enable-libmp3lame \
        --enable-parser=aac,mpegaudio,flac,vorbis,opus,h264,mpeg4video,mjpeg \
        --enable-demuxer=wav,mp3,aac,mov,flac,ogg,aiff,amr --enable-muxer=wav,adts,mov,mp4,ipod,flac,ogg,aiff,mp3 \
        --extra-cflags="-I$root/libs/include" --extra-ldflags="-L$root/libs/lib" \
        --enable-protocol=file --enable-w32threads --disable-pthreads
    quietly ffmpeg make "-j$jobs"
    quietly ffmpeg-install make install
}

step_boost() {
    local sources folder library file
    sources=$(sources_of boost1.74)
    enter boost
    mkdir -p "$root/libs/include" "$root/libs/lib"
    for folder in "$sources"/libs/*/include "$sources"/libs/numeric/*/include; do
        [[ ! -d $folder/boost ]] || cp -a "$folder/." "$root/libs/include/"
    done
    local common=(-O2 -w -std=c++17 -mthreads -DNDEBUG -DBOOST_ALL_NO_LIB "-I$root/libs/include")
    local thread=("${common[@]}" -DWIN32_LEAN_AND_MEAN -DBOOST_USE_WINDOWS_H -DBOOST_THREAD_WIN32
        -DBOOST_THREAD_USES_CHRONO -DBOOST_THREAD_BUILD_LIB=1)
    compile() { # LIBRARY FILE OPTION...
        quietly "boost-$1-$(basename "$2" .cpp)" $gxx "${@:3}" -c "$sources/libs/$1/src/$2" \
            -o "$1_$(basename "$2" .cpp).o"
    }
    for file in win32/thread.cpp win32/tss_dll.cpp win32/tss_pe.cpp win32/thread_primitives.cpp future.cpp; do
        compile thread "$file" "${thread[@]}"
    done
    for file in chrono.cpp process_cpu_clocks.cpp thread_clock.cpp; do compile chrono "$file" "${common[@]}"; done
    for file in lock_pool.cpp wait_ops_windows.cpp; do
        compile atomic "$file" "${common[@]}" -D_WIN32_WINNT=0x0601 "-I$sources/libs/atomic/src"
    done
    compile system error_code.cpp "${common[@]}"
    compile date_time gregorian/greg_month.cpp "${common[@]}"
    for library in thread chrono atomic system date_time; do
        rm -f "$root/libs/lib/libboost_$library.a"
        $host-ar rcs "$root/libs/lib/libboost_$library.a" "${library}"_*.o
    done
}

# autotools_library PACKAGE OPTION...: a library with a configure script, shared
autotools_library() {
    local sources
    sources=$(sources_of "$1")
    [[ -x $sources/configure ]] || (cd "$sources" && quietly "$1-autoreconf" autoreconf -fi)
    enter "$1"
    [[ -e Makefile ]] || quietly "$1-configure" "$sources/configure" --host=$host --prefix="$root/libs" \
        --enable-shared --disable-static CC=$gcc CXX=$gxx "${@:2}"
    quietly "$1" make "-j$jobs"
    quietly "$1-install" make install
}

step_amr() { autotools_library opencore-amr; }
step_sodium() { autotools_library libsodium; }

step_sndfile() {
    local sources
    sources=$(sources_of libsndfile)
    enter libsndfile
    quietly sndfile-configure cmake "$sources" -G "Unix Makefiles" -DCMAKE_SYSTEM_NAME=Windows \
        -DCMAKE_C_COMPILER=$gcc -DCMAKE_CXX_COMPILER=$gxx -DCMAKE_RC_COMPILER=$host-windres \
        -DCMAKE_INSTALL_PREFIX="$root/libs" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON -DBUILD_PROGRAMS=OFF \
        -DBUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DENABLE_EXTERNAL_LIBS=OFF -DENABLE_MPEG=OFF \
        -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY \
        -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY -DCMAKE_FIND_ROOT_PATH="$root/libs"
    quietly sndfile make "-j$jobs"
    quietly sndfile-install make install
}

step_openssl() {
    local sources
    sources=$(sources_of openssl)
    enter openssl
    [[ -e Makefile ]] || CC=$gcc AR=$host-ar RANLIB=$host-ranlib WINDRES=$host-windres RC=$host-windres \
        quietly openssl-configure perl "$sources/Configure" mingw64 shared no-tests --prefix="$root/libs" \
        --openssldir="$root/libs/ssl" --libdir=lib
    quietly openssl make "-j$jobs" build_libs
    quietly openssl-install make install_dev
}

step_runtime() {
    local name
    mkdir -p "$root/libs/bin"
    for name in libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll; do
        cp "$($gxx -print-file-name=$name)" "$root/libs/bin/" 2>/dev/null ||
            cp "/usr/$host/lib/$name" "$root/libs/bin/"
        $host-strip --strip-unneeded "$root/libs/bin/$name"
    done
}

step_wine() {
    local path
    path=$(printf 'Z:%s;' "$root/qt/bin" "$root/libs/bin" | tr / '\\')
    cat >"$root/wine-run" <<TEXT
#!/bin/bash
# wine-run PROGRAM.exe [ARGUMENT...]: runs a Windows program with the libraries of this folder
export WINEPREFIX=\${WINEPREFIX:-$root/prefix} WINEARCH=win64 WINEDEBUG=\${WINEDEBUG:--all}
# Names of files and arguments are UTF-8, whatever the caller's language.
export LC_ALL=C.UTF-8
# No questions, no menus, and no debugger that takes over when a program crashes.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winedbg.exe=d;winemenubuilder.exe=d"
export WINEPATH="$path\${WINEPATH-}"
# Wine keeps QT_ variables to itself; without this one a test that writes to no console writes to nobody.
export WINEQT_FORCE_STDERR_LOGGING=1
exec /usr/lib/wine/wine64 "\$@"
TEXT
    chmod +x "$root/wine-run"
    unset DISPLAY
    quietly wine-prefix timeout 300 "$root/wine-run" wineboot -i
    quietly wine-sound timeout 60 "$root/wine-run" reg add 'HKCU\Software\Wine\Drivers' /v Audio /d pulse /f
    quietly wine-version timeout 60 "$root/wine-run" reg add 'HKCU\Software\Wine' /v Version /d win10 /f
}

steps=(packages sources sqlite openssl qtbase qtmultimedia lame ffmpeg boost amr sndfile sodium
    runtime wine)
if (($#)); then chosen=("$@"); else chosen=("${steps[@]}"); fi
remaining=()
for step in "${chosen[@]}"; do
    declare -F "step_$step" >/dev/null || { echo "There is no step $step." >&2; usage >&2; exit 64; }
    [[ -e $root/done/$step ]] || remaining+=("$step")
done
((${#remaining[@]})) || exit 0
if [[ ! -d $root/src && -e $root/done/sources ]]; then # taken away when all was done; now something is to be done again
    rm "$root/done/sources"
    remaining=(sources "${remaining[@]}")
fi
echo "== Making the Windows tool chain in $root: 76 minutes on two busy cores, 4 GB of disk, of which 1 GB stays"
free=$(df --output=avail -B1M "$root" | tail -1)
((free > 5000)) || { echo "Only $free MB are free there. Set VOICEDESK_WINDOWS_ROOT to another folder." >&2; exit 1; }
mkdir -p "$root"/{src,build}
number=0
for step in "${remaining[@]}"; do
    printf -- '-- %d of %d: %s\n' $((++number)) "${#remaining[@]}" "$step"
    began=$SECONDS
    ("step_$step")
    printf '   %d s\n' $((SECONDS - began))
    touch "$root/done/$step"
done
if [[ ${KEEP-} != 1 && -e $root/done/wine ]]; then
    rm -rf "$root/build" "$root/src" "$root/apt"
fi
