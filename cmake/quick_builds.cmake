# SPDX-License-Identifier: MIT
# What keeps a whole build within minutes. Half of it went to reading the same large headers.

# A program of tests, on <gtest/gtest.h> and what else most of its sources include. The optimiser
# has nothing to gain in code that runs once: its first level, in an optimised build.
function(zorpel_quick_tests program)
  target_precompile_headers(${program} PRIVATE <gtest/gtest.h> ${ARGN})
  target_compile_options(${program} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()
