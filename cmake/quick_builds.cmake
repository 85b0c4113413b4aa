# SPDX-License-Identifier: MIT
# What keeps a whole build within minutes: half of it went to reading the same large headers.

# A program of tests, on <gtest/gtest.h> and what else most of its sources include.
function(zorpel_quick_tests program)
  target_precompile_headers(${program} PRIVATE <gtest/gtest.h> ${ARGN})
endfunction()
