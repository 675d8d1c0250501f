# What users of an installed prefix get beyond the libraries' own install rules
# (cmake/KTRInstall.cmake): the CMake package lib/cmake/KTRFunctionality.

# ---------------------------------------------------------------- CMake package
include(CMakePackageConfigHelpers)
set(KTR_CMAKE_DIR lib/cmake/KTRFunctionality)
install(EXPORT KTRFunctionalityTargets NAMESPACE KTRFunctionality::
  DESTINATION ${KTR_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/KTRFunctionalityConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KTRFunctionalityConfig.cmake
  INSTALL_DESTINATION ${KTR_CMAKE_DIR} NO_SET_AND_CHECK_MACRO)
# 7.x satisfies any request for 7.y with y <= x; 8.0 will not satisfy a request for 7.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KTRFunctionalityConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KTRFunctionalityConfig.cmake
              ${PROJECT_BINARY_DIR}/KTRFunctionalityConfigVersion.cmake
  DESTINATION ${KTR_CMAKE_DIR} COMPONENT dev)
