// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/progress_test.cpp: what the line of progress says. */
#include <gtest/gtest.h>

#include "progress.h"

namespace
{

zorpelx_progress begun()
{
    zorpelx_progress progress = {};
    progress.size = sizeof progress;
    progress.starts = 3;
    progress.allruns = 90;
    progress.cut = progress.objective = progress.run_cut = -1;
    progress.step = "";
    return progress;
}

constexpr int WIDTH = 80;
constexpr bool ENGINE = false, SEARCH = true;

TEST(Progress, the_engine_counts_runs_before_the_first_has_ended)
{
    EXPECT_EQ(progress_text(begun(), ENGINE, 0, WIDTH), "0 %, 0 of 3 starts, 0 of 90 runs, 0.0 s");
}

TEST(Progress, a_search_counts_jobs_before_the_first_has_ended)
{
    zorpelx_progress progress = begun();
    progress.starts = 1;
    EXPECT_EQ(progress_text(progress, SEARCH, 0, WIDTH), "0 %, 0 jobs, 0.0 s");
}

TEST(Progress, what_does_not_fit_is_left_out_from_the_end)
{
    EXPECT_EQ(progress_text(begun(), ENGINE, 0, 22), "0 %, 0 of 3 starts");
    EXPECT_EQ(progress_text(begun(), ENGINE, 0, 18), "0 %");
}

} // namespace
