# The zip for Windows: unpack it anywhere and run voicedesk.exe. Made by cpack in the build folder.
if(NOT WIN32)
    return()
endif()

set(qt_plugins
    audio/qtaudio_windows.dll
    mediaservice/dsengine.dll
    platforms/qwindows.dll
    sqldrivers/qsqlite.dll
)

install(TARGETS voicedesk voicedesk-decode VoiceDesk FrameSmith SoundTap TrelLogUtl RUNTIME DESTINATION .)
get_target_property(qmake Qt5::qmake IMPORTED_LOCATION)
get_filename_component(qt_root ${qmake}/../.. ABSOLUTE)
set(plugin_files)
foreach(plugin IN LISTS qt_plugins)
    get_filename_component(folder ${plugin} DIRECTORY)
    install(FILES ${qt_root}/plugins/${plugin} DESTINATION ${folder})
    list(APPEND plugin_files ${qt_root}/plugins/${plugin})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/cli/data/announcement.wav DESTINATION .)
foreach(text README THIRD-PARTY)
    configure_file(${PROJECT_SOURCE_DIR}/docs/windows/${text}.txt ${PROJECT_BINARY_DIR}/${text}.txt
        @ONLY NEWLINE_STYLE WIN32)
    install(FILES ${PROJECT_BINARY_DIR}/${text}.txt DESTINATION .)
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_BINARY_DIR}/LICENSE.txt COPYONLY)
install(FILES ${PROJECT_BINARY_DIR}/LICENSE.txt DESTINATION .)

# The libraries that all of these need.
set(library_folders ${CMAKE_FIND_ROOT_PATH})
list(TRANSFORM library_folders APPEND /bin)
list(APPEND library_folders ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
install(CODE "
    set(OBJDUMP \"${CMAKE_OBJDUMP}\")
    set(FILES \"$<TARGET_FILE:voicedesk>;$<TARGET_FILE:voicedesk-decode>;$<TARGET_FILE:VoiceDesk>;${plugin_files}\")
    set(FOLDERS \"${library_folders}\")
    set(DESTINATION \"\${CMAKE_INSTALL_PREFIX}\")
    include(\"${CMAKE_CURRENT_LIST_DIR}/WindowsLibraries.cmake\")
")

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME voicedesk)
set(CPACK_PACKAGE_VENDOR VoiceDesk)
set(CPACK_PACKAGE_FILE_NAME voicedesk-${PROJECT_VERSION}-windows-x64)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
