# What users of an installed prefix get beyond the libraries' own install rules
# (cmake/KTRInstall.cmake): the CMake package lib/cmake/KTRFunctionality, and the Debian
# packages CPack builds from the same rules (`cpack -G DEB` in the build folder, or the
# `package` target). Decisions: docs/DESIGN.md, "Packaging".

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

# ---------------------------------------------------------------- Debian packages
# Two packages from the two install components:
#   runtime -> libktrfunctionality7     the four shared libraries (versioned files and soname
#                                       links), share/KTRFunctionality, bin/ktrctl
#   dev     -> libktrfunctionality-dev  headers, the .so links, CMake and pkg-config files
# Both install under /opt/srn/agent, whatever CMAKE_INSTALL_PREFIX the build folder has.
set(KTR_AGENT_PREFIX /opt/srn/agent)
set(KTR_DEB_RUNTIME libktrfunctionality${PROJECT_VERSION_MAJOR})
set(KTR_DEB_DEV libktrfunctionality-dev)
set(KTR_DEB_MAINTAINER "KTRFunctionality developers <ktrfunctionality@srn-agent.org>")
set(KTR_DEB_SOURCE ${PROJECT_SOURCE_DIR}/packaging/deb)
set(KTR_DEB_BUILD ${PROJECT_BINARY_DIR}/deb)

# The changelog's newest entry must name the version being packaged.
file(STRINGS ${KTR_DEB_SOURCE}/changelog KTR_DEB_CHANGELOG_TOP LIMIT_COUNT 1)
if(NOT KTR_DEB_CHANGELOG_TOP MATCHES "^ktrfunctionality \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "packaging/deb/changelog: the newest entry is not version "
    "${PROJECT_VERSION} (\"${KTR_DEB_CHANGELOG_TOP}\"); add an entry for it")
endif()
find_program(KTR_GZIP gzip)
if(NOT KTR_GZIP)
  message(FATAL_ERROR "gzip not found: the packages' changelogs are compressed with it")
endif()

# Each package's files outside the prefix (cmake/KTRDebFiles.cmake, the last step of its
# component's install; not part of a plain `cmake --install build`):
#   /usr/share/doc/<package>/copyright, changelog.gz     both packages
#   /usr/share/lintian/overrides/<package>               both packages
#   /usr/bin/ktrctl, and a link in /usr/share/man/ or /usr/share/bash-completion/completions/
#   for every file the runtime component installs under the prefix's share/man/ or
#   share/bash-completion/completions/                   runtime package
# So a manual page or a completion file needs only its own install(... COMPONENT runtime)
# under the prefix. This file is included after every other install rule, and its step runs
# after theirs.
foreach(component runtime dev)
  string(TOUPPER ${component} upper)
  set(package ${KTR_DEB_${upper}})
  set(dir ${KTR_DEB_BUILD}/${component})
  file(MAKE_DIRECTORY ${dir})
  execute_process(COMMAND ${KTR_GZIP} -9nc ${KTR_DEB_SOURCE}/changelog
    OUTPUT_FILE ${dir}/changelog.gz RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "gzip failed on packaging/deb/changelog")
  endif()
  configure_file(${KTR_DEB_SOURCE}/${component}.lintian-overrides ${dir}/${package} @ONLY)
  if(component STREQUAL "runtime")
    set(links TRUE)
  else()
    set(links FALSE)
  endif()
  install(CODE "set(KTR_DEB_PACKAGE ${package})
    set(KTR_DEB_DOC_FILES \"${KTR_DEB_SOURCE}/copyright;${dir}/changelog.gz\")
    set(KTR_DEB_OVERRIDES \"${dir}/${package}\")
    set(KTR_DEB_LINKS ${links})" COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(SCRIPT ${PROJECT_SOURCE_DIR}/cmake/KTRDebFiles.cmake COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME ktrfunctionality)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${KTR_DEB_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${KTR_AGENT_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KTR_DEB_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${KTR_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "container technology library of the srn agent, and ktrctl
libKTRFunctionality handles the \"quellix\" container technology for the srn
container-management agent: container records and their messages, the
containers' configuration files, resource validation and the shared template
cache. This package holds it with the core libraries it stands on (MBQCore,
MBQMessage, MBQFunctionalityCore), the default vocabulary and ktrctl, the
node operator's tool, under ${KTR_AGENT_PREFIX}.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${KTR_DEB_DEV})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "${KTR_DEB_RUNTIME} (= ${PROJECT_VERSION}), libboost-dev (>= ${KTR_BOOST_MIN_VERSION}), libxml2-dev, uuid-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION "development files of the srn agent's container technology library
Headers of libKTRFunctionality and of the core libraries it stands on, the
links to build against them, the CMake package (find_package(KTRFunctionality))
and pkg-config files (KTRFunctionality, MBQFunctionalityCore, MBQMessage,
MBQCore), under ${KTR_AGENT_PREFIX}.")

include(CPack)
