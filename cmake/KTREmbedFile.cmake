# Turns a file into a C++ source holding its bytes, so that data ships inside a library.
#
#   cmake -DINPUT=<file> -DOUTPUT=<source.cpp> -DNAMESPACE=<ns> -DSYMBOL=<name> -P KTREmbedFile.cmake
#
# The source defines, in namespace <ns>:
#   extern const unsigned char <name>[];     the bytes, followed by one NUL
#   extern const std::size_t <name>Size;     the number of bytes, without that NUL
# A byte array rather than a raw string literal: no delimiter can clash with the content, and
# no compiler limit on string literal length applies.
foreach(var INPUT OUTPUT NAMESPACE SYMBOL)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "KTREmbedFile.cmake needs -D${var}=...")
  endif()
endforeach()

file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" hexLength)
math(EXPR size "${hexLength} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
# CMake's regular expressions have no {n}; spell out 16 bytes per line.
string(REPEAT "0x[0-9a-f][0-9a-f]," 16 line)
string(REGEX REPLACE "(${line})" "\\1\n    " bytes "${bytes}")
get_filename_component(inputName "${INPUT}" NAME)

set(content "// Generated from ${inputName} by cmake/KTREmbedFile.cmake; do not edit.
#include <cstddef>

namespace ${NAMESPACE} {

extern const unsigned char ${SYMBOL}[] = {
    ${bytes}0x00};
extern const std::size_t ${SYMBOL}Size = ${size};

}  // namespace ${NAMESPACE}
")

# Rewriting an unchanged file would make every build recompile it.
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" previous)
  if(previous STREQUAL content)
    return()
  endif()
endif()
file(WRITE "${OUTPUT}" "${content}")
