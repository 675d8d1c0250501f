# Install rules shared by the project's four libraries.
#
#   ktr_install_library(<target> DESCRIPTION <text>
#                       [REQUIRES <own libraries...>] [REQUIRES_PRIVATE <pkg-config modules...>]
#                       [LIBS <extra link flags...>])
#
# - the library in lib/: the versioned file and its soname link in the "runtime" component, the
#   plain .so link (what -l finds) in the "dev" component;
# - its public headers in include/<target>/ ("dev"), those named *Internal.h excepted;
# - a pkg-config file lib/pkgconfig/<target>.pc ("dev"): REQUIRES names the project's own
#   libraries it exposes (pinned to this version), REQUIRES_PRIVATE the system modules its
#   shared object needs, LIBS flags every user must link with. Its prefix is the one the
#   files are installed to, known only at install time (cmake --install --prefix, CPack), so
#   the file is completed then;
# - a run path to the installed lib/ for every program linked against the installed library,
#   in the pkg-config file's Libs and in the exported target's link options: the libraries
#   live outside the dynamic linker's folders, and the package does not add their folder to
#   the system-wide search path;
# - the target in the KTRFunctionalityTargets export set, and the alias
#   KTRFunctionality::<target>, so that a project that adds this tree with add_subdirectory
#   names the libraries as one that uses find_package does.
function(ktr_install_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "REQUIRES;REQUIRES_PRIVATE;LIBS")
  if(NOT arg_DESCRIPTION)
    message(FATAL_ERROR "ktr_install_library(${target}) needs a DESCRIPTION")
  endif()

  add_library(KTRFunctionality::${target} ALIAS ${target})
  # The headers need C++17; users of the exported targets get at least that.
  target_compile_features(${target} PUBLIC cxx_std_17)

  target_link_options(${target} INTERFACE "$<INSTALL_INTERFACE:LINKER:-rpath,$<INSTALL_PREFIX>/lib>")

  install(TARGETS ${target} EXPORT KTRFunctionalityTargets
    LIBRARY DESTINATION lib COMPONENT runtime NAMELINK_COMPONENT dev)
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/ DESTINATION include/${target} COMPONENT dev
    FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE)

  set(requires "")
  foreach(module IN LISTS arg_REQUIRES)
    list(APPEND requires "${module} = ${PROJECT_VERSION}")
  endforeach()
  list(JOIN requires ", " KTR_PC_REQUIRES)
  list(JOIN arg_REQUIRES_PRIVATE ", " KTR_PC_REQUIRES_PRIVATE)
  list(JOIN arg_LIBS " " KTR_PC_LIBS)
  if(KTR_PC_LIBS)
    string(PREPEND KTR_PC_LIBS " ")
  endif()
  set(KTR_PC_NAME ${target})
  set(KTR_PC_DESCRIPTION "${arg_DESCRIPTION}")
  set(KTR_INSTALL_PREFIX "@KTR_INSTALL_PREFIX@")  # left for the install-time step below
  set(pc ${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/KTRLibrary.pc.in ${pc}.in @ONLY)
  install(CODE "
    set(KTR_INSTALL_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${pc}.in\" \"${pc}\" @ONLY)" COMPONENT dev)
  install(FILES ${pc} DESTINATION lib/pkgconfig COMPONENT dev)
endfunction()
