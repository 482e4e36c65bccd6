# kestrel_sources(SOURCES ... HEADERS ...): what one folder of the library adds to it.
# HEADERS are public and are installed; private headers need no mention.
function(kestrel_sources)
  cmake_parse_arguments(arg "" "" "SOURCES;HEADERS" ${ARGN})
  list(TRANSFORM arg_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  list(TRANSFORM arg_HEADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  target_sources(kestrel_objects PRIVATE ${arg_SOURCES})
  target_sources(kestrel PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
endfunction()

# kestrel_tests(NAME sources... [DETAIL] [LIBRARIES ...] [LABELS ...]): one GoogleTest program and one
# CTest entry. DETAIL links the library's objects, for tests of kernels whose symbols are hidden.
function(kestrel_tests name)
  cmake_parse_arguments(arg "DETAIL" "" "LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  if(arg_DETAIL)
    target_link_libraries(${name} PRIVATE kestrel_objects kestrel_private_libraries)
  else()
    target_link_libraries(${name} PRIVATE Kestrel::kestrel)
  endif()
  target_link_libraries(${name} PRIVATE kestrel_warnings GTest::gmock GTest::gtest_main ${arg_LIBRARIES})
  target_compile_definitions(${name} PRIVATE
    KESTREL_SOURCE_DIR="${PROJECT_SOURCE_DIR}" KESTREL_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 900)
endfunction()

# kestrel_example(NAME [arguments...]): examples/NAME.cpp, built, and run as a test that must exit with 0 and print
# what the comment at the top of its source says.
function(kestrel_example name)
  add_executable(example_${name} ${name}.cpp)
  target_link_libraries(example_${name} PRIVATE Kestrel::kestrel kestrel_warnings)
  add_test(NAME example_${name}
           COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:example_${name}> "-DARGUMENTS=${ARGN}"
                   -DSOURCE=${CMAKE_CURRENT_SOURCE_DIR}/${name}.cpp -P ${PROJECT_SOURCE_DIR}/cmake/RunExample.cmake)
  set_tests_properties(example_${name} PROPERTIES LABELS examples TIMEOUT 120 ENVIRONMENT LC_ALL=C)
endfunction()

# kestrel_benchmark(NAME sources... [LIBRARIES ...]): one Google Benchmark program.
function(kestrel_benchmark name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE Kestrel::kestrel kestrel_warnings benchmark::benchmark_main
                                        ${arg_LIBRARIES})
endfunction()

# kestrel_fuzzer(NAME [LIBRARIES ...]): fuzz/NAME.cpp as a libFuzzer program, over the library's objects.
function(kestrel_fuzzer name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  add_executable(fuzz_${name} ${name}.cpp)
  target_link_libraries(fuzz_${name} PRIVATE kestrel_objects kestrel_private_libraries kestrel_warnings
                                             ${arg_LIBRARIES})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
endfunction()
