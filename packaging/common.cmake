# What the packages have in common; each names the build trees that it takes, as CPack does: folder, project, component,
# place in the package.
get_filename_component(root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
file(STRINGS ${root}/CMakeLists.txt project REGEX "^project\\(")
string(REGEX REPLACE ".*VERSION ([0-9.]+).*" "\\1" CPACK_PACKAGE_VERSION "${project}")
set(CPACK_PACKAGE_VENDOR "The Vexa Editor developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Editor of satellite receivers' channel databases")
set(CPACK_PACKAGE_DIRECTORY ${root}/build/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_CMAKE_GENERATOR Ninja)
set(CPACK_PACKAGE_DESCRIPTION 
"Edits the channel database of a digital satellite receiver, imports
published channel lists into it, builds the receiver's memory images and
moves them over a serial line. The command line tool is vexa; the windows
of vexa-editor run through Wine.")
