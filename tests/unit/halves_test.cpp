// SPDX-License-Identifier: MIT
/* tests/unit/halves_test.cpp: the two halves of a bisection side by side: whoever is first, the
 * result and the control record are those of one thread.
 */
#include "partition/halves.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <sstream>

#include "broken.h"
#include "core/random.h"
#include "core/timers.h"
#include "partition/recursive.h"
#include "support.h"

/* A thread that is none: the half is at work when it is started, or when it is waited for. */
struct Task {
    void (*work)(void *what);
    void *what;
};
static int nstarted, right_pins; // pins: of the half started last

static void *work_at_once(void (*work)(void *what), void *what)
{
    nstarted++;
    Half *const half = static_cast<Half *>(what);
    right_pins = half->graph->netptr[half->graph->nnets];
    work(half);
    half->ctrl.timers[TIME_SPARE] += 5;
    return &nstarted;
}

static void awaited_already(void *)
{
}

static void *work_later(void (*work)(void *what), void *what)
{
    nstarted++;
    return new Task{work, what};
}

static void work_now(void *place)
{
    const Task *const task = static_cast<Task *>(place);
    task->work(task->what);
    delete task;
}

static void *refuse(void (*)(void *what), void *)
{
    nstarted++;
    return nullptr;
}

static Crew early_crew(int idle)
{
    return {work_at_once, awaited_already, idle, true, 0, idle};
}

static Crew late_crew(int idle)
{
    return {work_later, work_now, idle, true, 0, idle};
}

struct Divided {
    std::vector<int> part;
    int cut, starts;
    std::string trace;
    PartCtrl ctrl; // as it was left
};

static PartCtrl own_ctrl()
{
    PartCtrl ctrl = default_ctrl();
    ctrl.random = own_generator(1);
    ctrl.seed = 11;
    return ctrl;
}

/* Partitions 400 vertices into k parts; one vertex is heavier than the others. */
static Divided divide(PartCtrl ctrl, int k, Crew *crew, unsigned seed = 6, int heaviest = 1)
{
    constexpr int ncells = 400;
    Divided result = {std::vector<int>(ncells), -1, 0, "", {}};
    ctrl.nparts = k;
    ctrl.crew = crew;
    nstarted = 0;
    std::vector<int> cellwgt(ncells, 1);
    cellwgt[7] = heaviest;
    const HGraphPtr graph = make_hgraph(ncells, random_nets(seed, ncells, 500, 4), {}, cellwgt);
    result.trace = capture_stdout(
        [&] { result.cut = MultilevelPartition__(&ctrl, graph.get(), result.part.data()); });
    result.starts = nstarted;
    result.ctrl = ctrl;
    return result;
}

static void expect_same(const Divided &wanted, const Divided &found)
{
    EXPECT_EQ(wanted.part, found.part);
    EXPECT_EQ(wanted.cut, found.cut);
    EXPECT_EQ(wanted.trace, found.trace);
}

TEST(Halves, are_the_same_whichever_is_first)
{
    for (const int k : {4, 5, 8, 13}) {
        for (const int dbglvl : {0, 1 + 2 + 4 + 8 + 16 + 128 + 256}) {
            PartCtrl ctrl = own_ctrl();
            ctrl.dbglvl = dbglvl;
            ctrl.kwayrefine = 1;
            const Divided wanted = divide(ctrl, k, nullptr);
            for (int idle = 1; idle < 4; idle++) {
                Crew early = early_crew(idle), late = late_crew(idle);
                const Divided right_first = divide(ctrl, k, &early);
                const Divided left_first = divide(ctrl, k, &late);
                expect_same(wanted, right_first);
                expect_same(wanted, left_first);
                EXPECT_GT(right_first.starts, 0);
                EXPECT_GT(left_first.starts, 0);
                EXPECT_EQ(early.idle, idle);
                EXPECT_EQ(late.idle, idle);
            }
        }
    }
}

TEST(Halves, leave_the_control_record_as_the_last_bisection_in_order_does)
{
    const Divided wanted = divide(own_ctrl(), 9, nullptr);
    Crew early = early_crew(2), late = late_crew(2);
    for (Crew *const crew : {&early, &late}) {
        const Divided found = divide(own_ctrl(), 9, crew);
        EXPECT_EQ(wanted.part, found.part);
        EXPECT_EQ(wanted.cut, found.cut);
        EXPECT_EQ(wanted.ctrl.MaxCellWgt, found.ctrl.MaxCellWgt);
        EXPECT_EQ(wanted.ctrl.heavycells, found.ctrl.heavycells);
        EXPECT_EQ(wanted.ctrl.splitratio, found.ctrl.splitratio);
        EXPECT_EQ(wanted.ctrl.random.oldest, found.ctrl.random.oldest);
        EXPECT_EQ(0, memcmp(wanted.ctrl.random.lagged, found.ctrl.random.lagged,
                            sizeof wanted.ctrl.random.lagged));
        EXPECT_EQ(found.ctrl.traces, nullptr);
        EXPECT_EQ(found.ctrl.crew, crew);
    }
}

TEST(Halves, come_one_after_the_other_if_no_thread_can_be_had)
{
    const Divided wanted = divide(own_ctrl(), 8, nullptr);
    Crew crew = {refuse, awaited_already, 3, true, 0, 3};
    const Divided found = divide(own_ctrl(), 8, &crew);
    expect_same(wanted, found);
    EXPECT_GT(found.starts, 0);
    EXPECT_EQ(crew.idle, 3);
}

TEST(Halves, get_no_thread_if_all_are_at_work_or_they_are_too_small)
{
    const Divided wanted = divide(own_ctrl(), 8, nullptr);
    Crew busy = early_crew(0), small = early_crew(3);
    small.least_pins = 1500; // of some 1,500 in all
    for (Crew *const crew : {&busy, &small}) {
        const Divided found = divide(own_ctrl(), 8, crew);
        expect_same(wanted, found);
        EXPECT_EQ(found.starts, 0);
    }
    Crew large = early_crew(3);
    large.least_pins = 300;
    EXPECT_GT(divide(own_ctrl(), 8, &large).starts, 0);
}

TEST(Halves, of_two_or_three_parts_are_not_split_again)
{
    for (const int k : {2, 3}) {
        Crew crew = early_crew(3);
        EXPECT_EQ(divide(own_ctrl(), k, &crew).starts, 0) << k << " parts";
    }
}

TEST(Halves, without_order_print_the_same_lines)
{
    PartCtrl ctrl = own_ctrl();
    ctrl.dbglvl = DBG_COARSEN | DBG_RUN;
    const Divided wanted = divide(ctrl, 8, nullptr);
    Crew crew = early_crew(3);
    crew.ordered = false;
    const Divided found = divide(ctrl, 8, &crew);
    EXPECT_NE(wanted.trace, found.trace);
    const auto lines = [](const std::string &text) {
        std::multiset<std::string> set;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) set.insert(line);
        return set;
    };
    EXPECT_EQ(lines(wanted.trace), lines(found.trace));
}

TEST(Halves, need_pins_enough_on_both_sides)
{
    int smaller_left = 0, smaller_right = 0;
    for (unsigned seed = 0; seed < 20; seed++) {
        Crew crew = early_crew(1);
        divide(own_ctrl(), 4, &crew, seed);
        crew.least_pins = right_pins + 1;
        EXPECT_EQ(divide(own_ctrl(), 4, &crew, seed).starts, 0);
        crew.least_pins = right_pins;
        (divide(own_ctrl(), 4, &crew, seed).starts > 0 ? smaller_right : smaller_left)++;
    }
    EXPECT_GT(smaller_left, 0);
    EXPECT_GT(smaller_right, 0);
}

TEST(Halves, with_a_heavy_vertex_on_one_side_leave_what_the_right_one_says)
{
    constexpr int n = 20;
    int nheavy = 0;
    for (unsigned seed = 0; seed < 20; seed++) {
        const Divided wanted = divide(own_ctrl(), 4, nullptr, seed, 30);
        Crew crew = early_crew(1);
        EXPECT_EQ(divide(own_ctrl(), 4, &crew, seed, 30).ctrl.heavycells, wanted.ctrl.heavycells);
        nheavy += wanted.ctrl.heavycells;
    }
    EXPECT_TRUE(nheavy > 0 && nheavy < n) << nheavy;
}

TEST(Halves, add_up_what_their_stages_took)
{
    PartCtrl ctrl = own_ctrl();
    ctrl.timers[TIME_SPARE] = 1000; // charged before
    ctrl.timers[TIME_AUX2] = 2000;
    Crew crew = early_crew(1);
    const Divided found = divide(ctrl, 8, &crew);
    EXPECT_GT(found.starts, 1);
    EXPECT_EQ(found.ctrl.timers[TIME_SPARE], 1000 + 5 * found.starts);
    EXPECT_EQ(found.ctrl.timers[TIME_AUX2], 2000);
}

TEST(CrewOk, the_broken_rule_is_named)
{
    Crew crew = early_crew(2);
    const auto rule = [&](int idle) {
        crew.idle = idle;
        return broken_rule([&] { return crew_ok(&crew); });
    };
    const auto rule_at_rest = [&](int idle) {
        crew.idle = idle;
        return broken_rule([&] { return crew_at_rest_ok(&crew); });
    };
    EXPECT_EQ(rule(4), "W1") << "a place given back twice";
    EXPECT_EQ(rule(3), "") << "while the caller's thread waits";
    EXPECT_EQ(rule(-1), "") << "before a waiter is back";
    EXPECT_EQ(rule_at_rest(2), "");
    for (const int idle : {-1, 1, 3, 4}) EXPECT_EQ(rule_at_rest(idle), "W2") << idle;
    crew.others = -1;
    EXPECT_EQ(rule(0), "W1");
}

TEST(Halves, of_every_call_give_their_places_back)
{
    for (const int idle : {0, 1, 3}) {
        Crew early = early_crew(idle), late = late_crew(idle);
        for (Crew *const crew : {&early, &late}) {
            divide(own_ctrl(), 13, crew);
            EXPECT_TRUE(crew_at_rest_ok(crew));
        }
    }
}
