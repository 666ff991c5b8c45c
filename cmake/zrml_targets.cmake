# Targets that every room links: zrml_warnings for our own code, zrml_build for reproducible arithmetic.

add_library(zrml_warnings INTERFACE)
target_compile_options(zrml_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)  # whose -Wconversion is wider
  target_compile_options(zrml_warnings INTERFACE -Wno-sign-conversion)
endif()

# No fused multiply-add and no fast-math: results are the same to the bit on every platform and at every optimisation level.
# Square roots come from the processor, not from the C library, whose NaN differs in sign between platforms.
add_library(zrml_build INTERFACE)
target_compile_options(zrml_build INTERFACE -ffp-contract=off -fno-math-errno)
target_include_directories(zrml_build INTERFACE ${PROJECT_SOURCE_DIR})
target_link_libraries(zrml_build INTERFACE zrml_warnings)
if(WIN32)
  target_compile_definitions(zrml_build INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
  target_link_options(zrml_build INTERFACE -static -Wl,--no-insert-timestamp)
elseif(ZRML_PORTABLE)
  target_link_options(zrml_build INTERFACE -static-libstdc++ -static-libgcc -Wl,--gc-sections)
endif()

# Hardening: a bug that a damaged file exploits ends in an abort. Sanitizers check the same and more. Not on Windows: there
# the stack protector would add a library of the compiler with its own imports.
if(WIN32)
  target_link_options(zrml_build INTERFACE -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
else()
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  target_link_options(zrml_build INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  if(NOT ZRML_SANITIZE)
    target_compile_options(zrml_build INTERFACE
      -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)  # makes precompiled headers the same in each build
  add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
endif()

if(ZRML_SANITIZE)
  add_compile_options(-fsanitize=${ZRML_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZRML_SANITIZE})
endif()

# Coverage for the fuzzers: which branches run.
add_library(zrml_watched INTERFACE)
if(ZRML_FUZZ)
  target_compile_options(zrml_watched INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zrml_join(RESULT SOURCES... [ALONE sources...]): with ZRML_JOIN, replaces SOURCES by files that include about eight of them
# each, so the compiler reads common headers once. ALONE are those with their own options, with names that others also have,
# or with functions that a program may replace. Paths are relative, so two clones can share a compiler cache.
function(zrml_join result)
  cmake_parse_arguments(JOIN "" "" "SOURCES;ALONE" ${ARGN})
  if(NOT ZRML_JOIN OR NOT JOIN_SOURCES)
    set(${result} ${JOIN_SOURCES} ${JOIN_ALONE} PARENT_SCOPE)
    return()
  endif()
  file(RELATIVE_PATH here ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  list(LENGTH JOIN_SOURCES count)
  math(EXPR groups "(${count} + 7) / 8")
  set(files "")
  foreach(group RANGE 1 ${groups})
    math(EXPR first "(${group} - 1) * ${count} / ${groups}")
    math(EXPR length "${group} * ${count} / ${groups} - ${first}")
    list(SUBLIST JOIN_SOURCES ${first} ${length} members)
    list(GET members 0 name)
    get_filename_component(name ${name} NAME_WE)
    list(TRANSFORM members REPLACE "(.+)" "#include \"${here}/\\1\"\n")
    string(JOIN "" text ${members})
    set(file ${CMAKE_CURRENT_BINARY_DIR}/joined/${name}.cpp)
    file(GENERATE OUTPUT ${file} CONTENT "${text}")
    list(APPEND files ${file})
  endforeach()
  set(${result} ${files} ${JOIN_ALONE} PARENT_SCOPE)
endfunction()

# zrml_add_room(NAME SOURCES... [ALONE sources...] ROOMS the rooms it may see): one static library per room.
function(zrml_add_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;ALONE;ROOMS" ${ARGN})
  zrml_join(sources SOURCES ${ROOM_SOURCES} ALONE ${ROOM_ALONE})
  add_library(zrml_${name} STATIC ${sources})
  target_link_libraries(zrml_${name} PUBLIC zrml_build ${ROOM_ROOMS} PRIVATE zrml_watched)
endfunction()

# zrml_header_packages(TARGET DIR...): lets TARGET include header-only packages of the build machine (CLI, nlohmann)
# without its other headers, which a cross build must not see.
function(zrml_header_packages target)
  foreach(package ${ARGN})
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
    file(CREATE_LINK /usr/include/${package} ${CMAKE_BINARY_DIR}/packages/${package} SYMBOLIC)
  endforeach()
  target_include_directories(${target} SYSTEM PRIVATE ${CMAKE_BINARY_DIR}/packages)
endfunction()

# zrml_add_version(TARGET FILE DESCRIPTION): what Windows shows of a program or library.
function(zrml_add_version target file description)
  if(WIN32)
    get_filename_component(name ${file} NAME_WE)
    get_target_property(kind ${target} TYPE)
    set(type VFT_DLL)
    if(kind STREQUAL EXECUTABLE)
      set(type VFT_APP)
    endif()
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  endif()
endfunction()
