# SPDX-License-Identifier: MIT
# The model-based tester: random cases of every family against counts of its own.
set(torture_dir ${CMAKE_CURRENT_LIST_DIR})
add_library(torture_cases STATIC
  ${torture_dir}/torture_calls.cpp ${torture_dir}/torture_case.cpp
  ${torture_dir}/torture_check.cpp ${torture_dir}/torture_draw.cpp)
target_include_directories(torture_cases PUBLIC ${torture_dir})
target_link_libraries(torture_cases PUBLIC zorpel_internal)

add_executable(zorpel-torture ${torture_dir}/torture_main.cpp ${torture_dir}/torture_shrink.cpp)
target_link_libraries(zorpel-torture PRIVATE torture_cases)

# A bounded dose; --n and --seed of any size find what this one does not.
add_test(NAME torture.dose COMMAND zorpel-torture --n 4000 --seed 20 --jobs 2)
set_tests_properties(torture.dose PROPERTIES LABELS model TIMEOUT 600)

# The same bits and traces from any number of threads: a dose, and the whole of it.
find_package(Threads REQUIRED)
add_executable(threads_check ${torture_dir}/threads_check.cpp)
target_link_libraries(threads_check PRIVATE torture_cases Threads::Threads)
add_test(NAME threads.a_dose_gives_the_same COMMAND threads_check --n 1500 --seed 5 --jobs 2)
set_tests_properties(threads.a_dose_gives_the_same PROPERTIES LABELS model TIMEOUT 600
  PASS_REGULAR_EXPRESSION "1500 cases of seed 5: all the same")
add_test(NAME threads.ten_thousand_cases_give_the_same
  COMMAND threads_check --n 10000 --seed 6 --jobs 2)
set_tests_properties(threads.ten_thousand_cases_give_the_same PROPERTIES LABELS slow TIMEOUT 3600
  PASS_REGULAR_EXPRESSION "10000 cases of seed 6: all the same")

add_executable(torture_edges ${torture_dir}/torture_edges_test.cpp)
target_link_libraries(torture_edges PRIVATE torture_cases GTest::gtest)
add_test(NAME torture.edges_of_32_bits COMMAND torture_edges)

# Files of 2^31 - 2 to 2^31 + 1 vertex entries: minutes, and 14 GB of memory.
add_test(NAME torture.entries_beyond_32_bits COMMAND Python3::Interpreter -B
  ${torture_dir}/entry_counts.py $<TARGET_FILE:zorpel>)
set_tests_properties(torture.entries_beyond_32_bits PROPERTIES
  LABELS slow TIMEOUT 3600 SKIP_RETURN_CODE 77)

add_executable(torture_exhaustive ${torture_dir}/torture_exhaustive.cpp)
target_link_libraries(torture_exhaustive PRIVATE torture_cases)
add_test(NAME torture.all_hypergraphs_of_3_vertices COMMAND torture_exhaustive 3 1)
add_test(NAME torture.all_hypergraphs_of_5_vertices COMMAND torture_exhaustive 5 3)

add_executable(torture_optimum ${torture_dir}/torture_optimum.cpp)
target_link_libraries(torture_optimum PRIVATE torture_cases)
add_test(NAME torture.no_result_beats_the_optimum COMMAND torture_optimum 100 1)

set_tests_properties(torture.edges_of_32_bits torture.all_hypergraphs_of_3_vertices
  torture.no_result_beats_the_optimum PROPERTIES LABELS model TIMEOUT 600)
set_tests_properties(torture.all_hypergraphs_of_5_vertices PROPERTIES LABELS slow TIMEOUT 3600)

# Results on 1000 cases, the same on every compiler, level and allocator (same_results.py), whatever
# fresh memory holds. A change of results on purpose changes this number.
add_test(NAME torture.results_are_unchanged
  COMMAND zorpel-torture --checksum --n 1000 --seed 20)
set_tests_properties(torture.results_are_unchanged PROPERTIES LABELS model TIMEOUT 600
  ENVIRONMENT MALLOC_PERTURB_=90
  PASS_REGULAR_EXPRESSION "1000 cases of seed 20: ca28e183e7d4261e")
