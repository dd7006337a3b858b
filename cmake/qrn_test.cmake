# qrn_test(NAME name SOURCES file... [LIBS target...] LABELS label...)
# Adds one test program; every case of it is a ctest case of its own. Labels: unit, sim, fuzz, bench.
find_package(GTest REQUIRED)
include(GoogleTest)

function(qrn_test)
  cmake_parse_arguments(arg "" "NAME" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${arg_NAME} ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBS} qrn_core qrn_test_support qrn_options GTest::gtest)
  gtest_discover_tests(${arg_NAME} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 300)
endfunction()
