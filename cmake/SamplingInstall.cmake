# Installation: the two shared libraries with their SONAMEs, the public
# headers, a CMake package (find_package(sampling) -> sampling::sampling) and
# a pkg-config file.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set_target_properties(sampling_platform PROPERTIES EXPORT_NAME platform)
install(TARGETS sampling sampling_platform EXPORT samplingTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Headers: everything a public header can reach. Internal headers (inline
# helpers and the routines behind the entry points) stay in the source tree.
# Installed file by file, so a folder that holds only internal headers is not
# created.
file(GLOB_RECURSE SAMPLING_PUBLIC_HEADERS RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/sampling/*.h ${PROJECT_SOURCE_DIR}/platform/*.h)
list(FILTER SAMPLING_PUBLIC_HEADERS EXCLUDE REGEX "${SAMPLING_INTERNAL_HEADERS}")
foreach(header ${SAMPLING_PUBLIC_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

install(EXPORT samplingTargets NAMESPACE sampling::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/sampling)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/samplingConfig.cmake.in
  ${PROJECT_BINARY_DIR}/samplingConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/sampling)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/samplingConfigVersion.cmake
  COMPATIBILITY ${SAMPLING_PACKAGE_COMPATIBILITY})
install(FILES ${PROJECT_BINARY_DIR}/samplingConfig.cmake
              ${PROJECT_BINARY_DIR}/samplingConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/sampling)

# Path from the installed .pc file back to the prefix, so the file stays valid
# wherever the tree is installed or moved.
file(RELATIVE_PATH SAMPLING_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(${PROJECT_SOURCE_DIR}/cmake/sampling.pc.in ${PROJECT_BINARY_DIR}/sampling.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/sampling.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
