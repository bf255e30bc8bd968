include(CMakePackageConfigHelpers)

# Two export sets: a host of libzel needs none of the packages that the static
# libzel_player passes on to its users.
install(TARGETS zel zel_c EXPORT zelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS zel_player EXPORT zelPlayerTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY include/zel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")

set(ZEL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zel)
foreach(set zelTargets zelPlayerTargets)
  install(EXPORT ${set} NAMESPACE zel:: DESTINATION ${ZEL_CMAKE_DIR} COMPONENT development)
endforeach()
configure_package_config_file(cmake/zel-config.cmake.in zel-config.cmake
  INSTALL_DESTINATION ${ZEL_CMAKE_DIR})
write_basic_package_version_file(zel-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/zel-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zel-config-version.cmake
  DESTINATION ${ZEL_CMAKE_DIR} COMPONENT development)

# The .pc files find their prefix from where they lie, so that
# `cmake --install --prefix` and staged installs give working files.
set(pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH ZEL_PC_PREFIX ${pc_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH ZEL_PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH ZEL_PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(pc zel zel-c zel-player)
  configure_file(cmake/${pc}.pc.in ${pc}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
