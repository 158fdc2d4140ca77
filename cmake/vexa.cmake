# Helpers that give every room of the tree the same shape.

find_package(ZLIB REQUIRED)
find_package(Threads REQUIRED)

add_library(vexa_options INTERFACE)
target_include_directories(vexa_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(vexa_options INTERFACE -Wall -Wextra -Wconversion -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports overlapping copies in joined strings, and overflows in strings and growing vectors, where there are none.
  target_compile_options(vexa_options INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds)
endif()
if(WIN32)
  target_compile_definitions(vexa_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 __USE_MINGW_ANSI_STDIO=1)
  target_link_options(vexa_options INTERFACE -static)
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE STREQUAL "Release")
  # Runs beside an older C++ library, and takes a third less memory before the first byte is read.
  target_link_options(vexa_options INTERFACE -static-libstdc++ -static-libgcc)
endif()

# Header-only libraries are reached through a folder of links, so that a cross
# compiler sees these three and nothing else of the host's headers.
add_library(vexa_headers INTERFACE)
if(CMAKE_CROSSCOMPILING)
  set(links ${CMAKE_BINARY_DIR}/links)
  file(MAKE_DIRECTORY ${links})
  foreach(name CLI toml++ nlohmann)
    if(EXISTS /usr/include/${name})
      file(CREATE_LINK /usr/include/${name} ${links}/${name} SYMBOLIC)
    endif()
  endforeach()
  target_include_directories(vexa_headers SYSTEM INTERFACE ${links})
endif()

# The standard headers take longer to parse than most files that include them: they are parsed once for all rooms, with
# the first one. Files still include what they use.
set(vexa_standard_headers <algorithm> <array> <chrono> <cstdint> <cstring> <filesystem> <functional> <map> <memory>
  <optional> <set> <span> <string> <string_view> <vector>)

# vexa_alone(FILES...): these are never joined with others into one.
function(vexa_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# vexa_library(NAME [FOLDER dir] [EXCLUDE files] [PRECOMPILE headers of its own] [DEPENDS] libraries...)
function(vexa_library name)
  cmake_parse_arguments(ARG "" "FOLDER" "EXCLUDE;DEPENDS;PRECOMPILE" ${ARGN})
  set(folder ${name})
  if(ARG_FOLDER)
    set(folder ${ARG_FOLDER})
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  if(WIN32)
    file(GLOB system CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/windows/*.cpp)
  else()
    file(GLOB system CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/posix/*.cpp)
  endif()
  foreach(file ${ARG_EXCLUDE})
    list(REMOVE_ITEM sources ${CMAKE_SOURCE_DIR}/${folder}/${file})
  endforeach()
  set(sources ${sources} ${system})
  if(sources)
    add_library(${name} STATIC ${sources})
    set(kind PUBLIC)
    if(ARG_PRECOMPILE OR NOT TARGET platform OR name STREQUAL "platform")
      target_precompile_headers(${name} PRIVATE ${vexa_standard_headers} ${ARG_PRECOMPILE})
    else()
      target_precompile_headers(${name} REUSE_FROM platform)
    endif()
  else()
    add_library(${name} INTERFACE)
    set(kind INTERFACE)
  endif()
  target_link_libraries(${name} ${kind} vexa_options vexa_headers Threads::Threads
    ${ARG_DEPENDS} ${ARG_UNPARSED_ARGUMENTS})
endfunction()

function(vexa_program name source)
  if(EXISTS ${CMAKE_SOURCE_DIR}/${source})
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE ${ARGN})
  endif()
endfunction()
