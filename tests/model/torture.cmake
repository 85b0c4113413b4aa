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
