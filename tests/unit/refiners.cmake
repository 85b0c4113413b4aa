# SPDX-License-Identifier: MIT
# Coarsening, two-way refinement and k-way refinement; direct k-way runs on the shipped examples.
zorpel_unit_tests(coarsen_tests
  partner_test.cpp records_ok_test.cpp
  contract_test.cpp collapse_test.cpp match_edges_test.cpp match_star_test.cpp
  match_hedges_test.cpp coarsen_test.cpp)
zorpel_unit_tests(refine_tests
  gains_test.cpp bisection_ok_test.cpp net_counts_test.cpp fm_test.cpp oneway_test.cpp
  balance_test.cpp uncoarsen_test.cpp)
zorpel_unit_tests(kway_tests
  kway_gains_test.cpp refine_random_test.cpp uncoarsen_kway_test.cpp direct_test.cpp)
target_compile_definitions(kway_tests PRIVATE
  ZORPEL_EXAMPLES="${PROJECT_SOURCE_DIR}/examples")
