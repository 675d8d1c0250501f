# Install-time step of one Debian package's component (cmake/KTRPackage.cmake runs it last in
# the component's install): the files the package holds outside the installation prefix.
#
# Input: KTR_DEB_PACKAGE (package name), KTR_DEB_DOC_FILES (files for /usr/share/doc/<package>),
# KTR_DEB_OVERRIDES (its lintian overrides file, named after the package) and KTR_DEB_LINKS
# (true for the package that holds ktrctl, the manual pages and the completions).
#
# Those files go only into a staging root (DESTDIR), as CPack's is: a component install
# straight into the system leaves /usr alone.
if("$ENV{DESTDIR}" STREQUAL "")
  message(STATUS "Skipping ${KTR_DEB_PACKAGE}'s files in /usr: they are installed only under DESTDIR")
  return()
endif()

file(INSTALL DESTINATION "/usr/share/doc/${KTR_DEB_PACKAGE}" TYPE FILE FILES ${KTR_DEB_DOC_FILES})
file(INSTALL DESTINATION /usr/share/lintian/overrides TYPE FILE FILES "${KTR_DEB_OVERRIDES}")
if(NOT KTR_DEB_LINKS)
  return()
endif()

# A link for each of these, in the place where the system looks for it:
#   <prefix>/bin/ktrctl                          /usr/bin/ktrctl (on PATH; ktrctl's run path
#                                                $ORIGIN/../lib is taken from the link's target)
#   <prefix>/share/man/<section>/<page>          /usr/share/man/<section>/<page>
#   <prefix>/share/bash-completion/completions/* /usr/share/bash-completion/completions/*
set(links "bin/ktrctl;/usr/bin/ktrctl")
foreach(dir IN ITEMS man bash-completion/completions)
  set(from "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/${dir}")
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${from}" "${from}/*")
  foreach(file IN LISTS files)
    list(APPEND links "share/${dir}/${file}" "/usr/share/${dir}/${file}")
  endforeach()
endforeach()
while(links)
  list(POP_FRONT links target link)
  if(NOT EXISTS "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${target}")
    message(FATAL_ERROR "${KTR_DEB_PACKAGE}: ${link} would point to ${CMAKE_INSTALL_PREFIX}/${target}, "
      "which this package does not install")
  endif()
  get_filename_component(parent "$ENV{DESTDIR}${link}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${CMAKE_INSTALL_PREFIX}/${target}" "$ENV{DESTDIR}${link}" SYMBOLIC)
  message(STATUS "Linking: $ENV{DESTDIR}${link} -> ${CMAKE_INSTALL_PREFIX}/${target}")
endwhile()
