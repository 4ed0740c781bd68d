# Installation of the shared library, its header, a pkg-config file and a CMake package.
include(CMakePackageConfigHelpers)

# Only the C interface leaves the shared library. The standard headers mark
# their templates visible, so hidden visibility alone would still export
# instances such as std::vector growth functions; the version script keeps
# them local.
set(KURVO_VERSION_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/kurvo.map)
target_link_options(kurvo PRIVATE "LINKER:--version-script=${KURVO_VERSION_SCRIPT}")
set_property(TARGET kurvo APPEND PROPERTY LINK_DEPENDS ${KURVO_VERSION_SCRIPT})
set_target_properties(kurvo PROPERTIES PUBLIC_HEADER ${PROJECT_SOURCE_DIR}/include/kurvo.h)

set(KURVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kurvo)

install(TARGETS kurvo EXPORT kurvoTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT kurvoTargets NAMESPACE kurvo:: DESTINATION ${KURVO_CMAKE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/kurvoConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kurvoConfig.cmake INSTALL_DESTINATION ${KURVO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kurvoConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kurvoConfig.cmake ${PROJECT_BINARY_DIR}/kurvoConfigVersion.cmake
  DESTINATION ${KURVO_CMAKE_DIR})

# The .pc file finds the prefix from its own place, so that an installation
# moved or made with "cmake --install --prefix" still points at itself.
file(RELATIVE_PATH KURVO_PC_PREFIX_FROM_PCDIR
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/kurvo.pc.in ${PROJECT_BINARY_DIR}/kurvo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kurvo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
