# ktr_add_test(<target> SOURCES <files...> LIBS <libs...>)
# One GoogleTest program per tested layer; every TEST becomes its own CTest case.
function(ktr_add_test target)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${target} ${T_SOURCES})
  target_link_libraries(${target} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
endfunction()
