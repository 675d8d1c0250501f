# Lists the resource names of a vocabulary's "qos" category as a C++ array, so that a program
# knows the default vocabulary's keys without parsing XML at run time.
#
#   cmake -DINPUT=<vocabulary.xml> -DOUTPUT=<source.cpp> -DNAMESPACE=<ns> -DSYMBOL=<name> -P KTRResourceKeys.cmake
#
# The source defines, in namespace <ns>, `extern const char* const <name>[]` (lower-case names,
# ended by a null pointer). The file is the project's own vocabulary: one <category> per "qos"
# block, each <parameter> starting with its <name>.
foreach(var INPUT OUTPUT NAMESPACE SYMBOL)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "KTRResourceKeys.cmake needs -D${var}=...")
  endif()
endforeach()

file(READ "${INPUT}" xml)
# Comments may mention anything; they are not part of the vocabulary.
string(REGEX REPLACE "<!--([^-]|-[^-])*-->" "" xml "${xml}")
string(REGEX MATCH "<category>[ \t\r\n]*<name>qos</name>(.*)" qos "${xml}")
if(NOT qos)
  message(FATAL_ERROR "${INPUT} has no \"qos\" category")
endif()
string(FIND "${qos}" "</category>" end)
string(SUBSTRING "${qos}" 0 ${end} qos)
string(REGEX MATCHALL "<parameter>[ \t\r\n]*<name>[^<]+</name>" parameters "${qos}")
set(names "")
foreach(parameter IN LISTS parameters)
  string(REGEX REPLACE ".*<name>([^<]+)</name>" "\\1" name "${parameter}")
  string(TOLOWER "${name}" name)
  string(APPEND names "    \"${name}\",\n")
endforeach()
get_filename_component(inputName "${INPUT}" NAME)
set(content "// Generated from ${inputName} by cmake/KTRResourceKeys.cmake; do not edit.
namespace ${NAMESPACE} {

extern const char* const ${SYMBOL}[] = {
${names}    nullptr};

}  // namespace ${NAMESPACE}
")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" previous)
  if(previous STREQUAL content)
    return()
  endif()
endif()
file(WRITE "${OUTPUT}" "${content}")
