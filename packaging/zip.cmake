include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CPACK_PACKAGE_NAME VexaEditor)
set(CPACK_INSTALL_CMAKE_PROJECTS "${root}/build/windows-x86;VexaEditor;program;/")
set(CPACK_PACKAGE_FILE_NAME VexaEditor-${CPACK_PACKAGE_VERSION})
