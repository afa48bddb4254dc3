# The installed tree: libraries, headers, a CMake package and a pkg-config file. All of it can be
# moved to another folder.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ara_per)

set(installed ara_per)
if(NOT ARA_LOG_TARGET)
  list(APPEND installed ara_log)
endif()
if(NOT JSCONFIG_TARGET)
  list(APPEND installed jsconfig)
endif()
install(TARGETS ${installed} EXPORT ara_per_targets FILE_SET HEADERS)
install(EXPORT ara_per_targets DESTINATION ${package_dir})

configure_package_config_file(cmake/ara_per-config.cmake.in
  ${PROJECT_BINARY_DIR}/ara_per-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ara_per-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/ara_per-config.cmake
  ${PROJECT_BINARY_DIR}/ara_per-config-version.cmake
  DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pc
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
# A shared library brings its own dependencies along; a static one names them. A library of the
# platform that took a stand-in's place is the platform's to name.
set(pc_libraries "-lara_per")
if(NOT BUILD_SHARED_LIBS AND NOT JSCONFIG_TARGET)
  string(APPEND pc_libraries " -ljsconfig -lsimdjson")
endif()
if(NOT BUILD_SHARED_LIBS)
  string(APPEND pc_libraries " -pthread")
endif()
if(NOT ARA_LOG_TARGET)
  string(APPEND pc_libraries " -llog")
endif()
configure_file(cmake/ara_per.pc.in ara_per.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ara_per.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
