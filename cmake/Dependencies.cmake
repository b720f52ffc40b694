# Libraries that are installed and called.

find_package(Qt5 5.15 REQUIRED COMPONENTS
    Core Gui Multimedia Network Sql)
if(VOICEDESK_WINDOW)
    find_package(Qt5 5.15 REQUIRED COMPONENTS LinguistTools Quick QuickControls2 Widgets)
endif()
find_package(OpenSSL 3.0 REQUIRED)
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS thread)
find_package(PkgConfig REQUIRED)
pkg_check_modules(AVCODEC REQUIRED IMPORTED_TARGET libavcodec libavutil)
pkg_check_modules(SWRESAMPLE REQUIRED IMPORTED_TARGET libswresample libavutil)
pkg_check_modules(SWSCALE REQUIRED IMPORTED_TARGET libswscale libavutil)
pkg_check_modules(AMRNB REQUIRED IMPORTED_TARGET opencore-amrnb)
pkg_check_modules(AVFORMAT REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)

# Of talks to real cameras, where it is there.
pkg_check_modules(GSTREAMER QUIET IMPORTED_TARGET
    gstreamer-1.0>=1.18 gstreamer-app-1.0 gstreamer-rtp-1.0 gstreamer-rtsp-1.0 gstreamer-sdp-1.0)
option(VOICEDESK_ONVIF "Talk to ONVIF cameras (needs GStreamer)" ${GSTREAMER_FOUND})
if(VOICEDESK_ONVIF AND NOT GSTREAMER_FOUND)
    message(FATAL_ERROR "VOICEDESK_ONVIF needs the development files of GStreamer 1.18 or newer and its base plug-ins")
endif()
