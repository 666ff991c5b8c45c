# What is installed, by component: program, library, development, python, plugin, notices. Every path is relative to the
# prefix, so an installed tree may be moved. Programs of others find the build tree in the same way: zrml_DIR is its folder.
set(CMAKE_INSTALL_DOCDIR share/doc/zrml CACHE PATH "Folder of installed notices, below the prefix")
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(ZRML_INSTALL_PYTHON ${CMAKE_INSTALL_LIBDIR}/zrml/python CACHE STRING "Folder of installed Python packages, below the prefix")
set(ZRML_INSTALL_ZSH ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Folder of installed zsh completions, below the prefix")
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zrml)
set(plugin_folder ${CMAKE_INSTALL_LIBDIR}/zrml)

# zrml_path_between(RESULT FROM TO): the path from one installed folder to another.
function(zrml_path_between result from to)
  file(RELATIVE_PATH path /prefix/${from} /prefix/${to})
  string(REGEX REPLACE "/$" "" path "${path}")
  set(${result} ${path} PARENT_SCOPE)
endfunction()

install(TARGETS zrml RUNTIME COMPONENT program)
if(ZRML_PAGES)
  install(DIRECTORY ${ZRML_PAGES}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT program)
  install(DIRECTORY ${ZRML_PAGES}/bash/ DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(DIRECTORY ${ZRML_PAGES}/zsh/ DESTINATION ${ZRML_INSTALL_ZSH} COMPONENT program)
endif()
install(TARGETS zrml_provider
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT plugin
  LIBRARY DESTINATION ${plugin_folder} COMPONENT plugin)

# The library: what programs need when they run, and what their builds need.
set(libraries zrml_shared)
if(TARGET zrml_static)
  list(APPEND libraries zrml_static)
endif()
install(TARGETS ${libraries} EXPORT zrml
  RUNTIME COMPONENT library
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zrml DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT zrml FILE zrmlConfig.cmake NAMESPACE zrml:: DESTINATION ${cmake_folder} COMPONENT development)
export(EXPORT zrml FILE ${PROJECT_BINARY_DIR}/zrmlConfig.cmake NAMESPACE zrml::)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zrmlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zrmlConfigVersion.cmake DESTINATION ${cmake_folder} COMPONENT development)
zrml_path_between(ZRML_PREFIX ${CMAKE_INSTALL_LIBDIR}/pkgconfig .)
configure_file(${PROJECT_SOURCE_DIR}/library/zrml.pc.in ${PROJECT_BINARY_DIR}/zrml.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zrml.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The Python package loads the library that lies beside it: on Linux that is a link to the installed one.
file(GLOB modules CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/python/zrml/*.py ${PROJECT_SOURCE_DIR}/python/zrml/py.typed)
install(FILES ${modules} DESTINATION ${ZRML_INSTALL_PYTHON}/zrml COMPONENT python)
if(WIN32)
  install(FILES $<TARGET_FILE:zrml_shared> DESTINATION ${ZRML_INSTALL_PYTHON}/zrml COMPONENT python)
else()
  zrml_path_between(folder ${ZRML_INSTALL_PYTHON}/zrml ${CMAKE_INSTALL_LIBDIR})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/installed)
  file(CREATE_LINK ${folder}/libzrml.so.1 ${PROJECT_BINARY_DIR}/installed/libzrml.so SYMBOLIC)
  install(FILES ${PROJECT_BINARY_DIR}/installed/libzrml.so DESTINATION ${ZRML_INSTALL_PYTHON}/zrml COMPONENT python)
endif()

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/THIRD_PARTY.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT notices)
