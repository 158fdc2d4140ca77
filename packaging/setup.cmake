include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CPACK_PACKAGE_NAME VexaEditor)
set(CPACK_INSTALL_CMAKE_PROJECTS
  "${root}/build/windows-x86;VexaEditor;program;/x86;${root}/build/windows-x64;VexaEditor;program;/x64")
set(CPACK_PACKAGE_FILE_NAME VexaEditor-${CPACK_PACKAGE_VERSION}-setup)
set(CPACK_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
set(VEXA_ICON ${root}/ui/controls/vexa.ico)
