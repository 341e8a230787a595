# qumbrel_test(NAME <name> SOURCES <files...> LIBS <libs...> [LABELS <labels...>])
# One GoogleTest executable, registered with CTest test by test.
function(qumbrel_test)
  cmake_parse_arguments(T "" "NAME" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${T_NAME} PRIVATE
    QUMBREL_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    QUMBREL_BIN_DIR="${CMAKE_BINARY_DIR}/bin")
  set_target_properties(${T_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(T_LABELS)
    gtest_discover_tests(${T_NAME} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS "${T_LABELS}")
  else()
    gtest_discover_tests(${T_NAME} DISCOVERY_MODE PRE_TEST)
  endif()
endfunction()
