// SPDX-License-Identifier: MIT
/* tests/unit/partner_test.cpp: sums of edge weights in a table of ints, and when a survey is sure
 * of the strongest candidate.
 */
#include "coarsen/partner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

static const float WEIGHTS[] = {0.0f,    1e-45f, 1.17549435e-38f, 0.1f,    1.0f / 3, 1.0f,
                                3.0e38f, 7.5f,   2147483647.0f,   INFINITY};

TEST(Connectivity, an_unseen_vertex_takes_on_any_weight)
{
    for (const float weight : WEIGHTS) {
        EXPECT_EQ(strength_of(strengthened(UNSEEN, weight)), weight);
        EXPECT_NE(strengthened(UNSEEN, weight), UNSEEN) << weight;
    }
}

TEST(Connectivity, no_sum_of_weights_is_unseen)
{
    for (const float a : WEIGHTS)
        for (const float b : WEIGHTS)
            EXPECT_NE(strengthened(strengthened(UNSEEN, a), b), UNSEEN) << a << ' ' << b;
}

TEST(Connectivity, a_barred_vertex_stays_barred)
{
    EXPECT_NE(BARRED, UNSEEN);
    for (const float weight : WEIGHTS)
        if (std::isfinite(weight)) {
            EXPECT_EQ(strengthened(BARRED, weight), BARRED) << weight;
        }
}

/* Strengths of two candidates: of few hyperedges that a survey looks at, and of many weak ones that
 * it skips, which all add to the second. The full sums are taken in a random order, as a search
 * takes them. */
TEST(Lead, a_safe_lead_survives_every_search_over_all_hyperedges)
{
    std::mt19937 draw(11);
    const auto weight = [&](float most) {
        return most * static_cast<float>(draw() % 4096 + 1) / 4096.0f;
    };
    int nsafe = 0;
    for (int round = 0; round < 20000; round++) {
        const int nstrong = 1 + static_cast<int>(draw() % 4), nweak = static_cast<int>(draw() % 40);
        std::vector<float> first, second;
        float most = 0, next = 0, skipped = 0;
        for (int i = 0; i < nstrong; i++) {
            first.push_back(weight(2.0f));
            most += first.back();
            if (draw() % 2) {
                second.push_back(weight(1.0f));
                next += second.back();
            }
        }
        for (int i = 0; i < nweak; i++) {
            second.push_back(weight(0.1f));
            skipped += second.back();
        }
        const int degree = nstrong + nweak;
        if (round % 2) { // as close as can be
            most = next + skipped;
            first.assign(1, most);
            for (int i = static_cast<int>(draw() % 64); i > 0; i--)
                most = first[0] = std::nextafter(first[0], INFINITY);
        }
        if (!lead_is_safe(most, next, skipped, degree)) continue;
        nsafe++;
        std::shuffle(first.begin(), first.end(), draw);
        std::shuffle(second.begin(), second.end(), draw);
        float sum = 0, rival = 0;
        for (const float w : first) sum += w;
        for (const float w : second) rival += w;
        ASSERT_GT(sum, rival) << round;
    }
    EXPECT_GT(nsafe, 1000);
}

TEST(Lead, what_was_skipped_or_rounded_is_not_overlooked)
{
    EXPECT_TRUE(lead_is_safe(2.0f, 1.0f, 0.5f, 4));
    EXPECT_FALSE(lead_is_safe(2.0f, 1.0f, 1.0f, 4)) << "a tie";
    EXPECT_FALSE(lead_is_safe(2.0f, 1.5f, 1.0f, 4));
    EXPECT_FALSE(lead_is_safe(1.0f, -INFINITY, 1.5f, 4)) << "an unlisted candidate";
    EXPECT_TRUE(lead_is_safe(1.0f, -INFINITY, 0.5f, 4));
    EXPECT_FALSE(lead_is_safe(1.0f, 0.999999f, 0.0f, 8)) << "within the rounding of eight sums";
    EXPECT_FALSE(lead_is_safe(INFINITY, 1.0f, INFINITY, 4));
}
