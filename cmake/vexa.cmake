# Helpers that give every room of the tree the same shape.

find_package(ZLIB REQUIRED)
find_package(Threads REQUIRED)

add_library(vexa_options INTERFACE)
# The version stands in project() alone; this header carries it to code and resources.
set(VEXA_GENERATED ${CMAKE_BINARY_DIR}/include/generated)
configure_file(${CMAKE_CURRENT_LIST_DIR}/version.h.in ${VEXA_GENERATED}/version.h @ONLY)
target_include_directories(vexa_options INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/include)
if(MSVC)
  # Warnings are errors only where this tree is built every day.
  target_compile_options(vexa_options INTERFACE /W3 /utf-8 /permissive- /Zc:__cplusplus /EHsc)
  target_compile_definitions(vexa_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(vexa_options INTERFACE -Wall -Wextra -Wconversion -Wformat=2 -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports overlapping copies in joined strings, and overflows in strings and growing vectors, where there are none.
  target_compile_options(vexa_options INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread -Wno-array-bounds)
endif()
if(WIN32)
  target_compile_definitions(vexa_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 __USE_MINGW_ANSI_STDIO=1)
  if(NOT MSVC)
    target_link_options(vexa_options INTERFACE -static)
  endif()
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE STREQUAL "Release")
  # Runs beside an older C++ library, and takes a third less memory before the first byte is read.
  target_link_options(vexa_options INTERFACE -static-libstdc++ -static-libgcc)
endif()

# Header-only libraries are reached through a folder of links, so that a cross
# compiler sees these three and nothing else of the host's headers. A compiler without a folder of headers of its own, as
# on Windows, finds them by the packages' configuration.
if(WIN32 AND NOT CMAKE_CROSSCOMPILING)
  set(by_package ON)
else()
  set(by_package OFF)
endif()
option(VEXA_HEADERS_BY_PACKAGE "Find header-only libraries by find_package" ${by_package})
add_library(vexa_headers INTERFACE)
if(VEXA_HEADERS_BY_PACKAGE)
  find_package(CLI11 CONFIG REQUIRED)
  find_package(tomlplusplus CONFIG REQUIRED)
  find_package(nlohmann_json CONFIG REQUIRED)
  target_link_libraries(vexa_headers INTERFACE CLI11::CLI11 tomlplusplus::tomlplusplus nlohmann_json::nlohmann_json)
endif()
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

# The rooms that a room may use (tools/rooms.txt) and that are libraries.
set(vexa_rooms_file ${CMAKE_SOURCE_DIR}/tools/rooms.txt)
set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${vexa_rooms_file})
function(vexa_rooms_below folder result)
  file(STRINGS ${vexa_rooms_file} line REGEX "^${folder}:")
  string(REGEX MATCHALL "[^ ]+" words "${line}")
  set(rooms)
  foreach(word ${words})
    string(REPLACE "/" "_" target ${word})
    if(TARGET ${target})
      list(APPEND rooms ${target})
    endif()
  endforeach()
  set(${result} ${rooms} PARENT_SCOPE)
endfunction()

# vexa_library(NAME [FOLDER dir] [EXCLUDE files] [PRECOMPILE headers of its own | PRECOMPILED_BY library] [DEPENDS] other
# libraries...). It is linked with the rooms that it may use as well.
function(vexa_library name)
  cmake_parse_arguments(ARG "" "FOLDER;PRECOMPILED_BY" "EXCLUDE;DEPENDS;PRECOMPILE" ${ARGN})
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
    if(ARG_PRECOMPILED_BY)
      target_precompile_headers(${name} REUSE_FROM ${ARG_PRECOMPILED_BY})
    elseif(ARG_PRECOMPILE OR NOT TARGET platform OR name STREQUAL "platform")
      target_precompile_headers(${name} PRIVATE ${vexa_standard_headers} ${ARG_PRECOMPILE})
    else()
      target_precompile_headers(${name} REUSE_FROM platform)
    endif()
  else()
    add_library(${name} INTERFACE)
    set(kind INTERFACE)
  endif()
  vexa_rooms_below(${folder} rooms)
  target_link_libraries(${name} ${kind} vexa_options vexa_headers Threads::Threads ${rooms}
    ${ARG_DEPENDS} ${ARG_UNPARSED_ARGUMENTS})
endfunction()

function(vexa_program name source)
  if(EXISTS ${CMAKE_SOURCE_DIR}/${source})
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE ${ARGN})
  endif()
endfunction()
