// SPDX-License-Identifier: MIT
/* mpi/tests/records_of_ranks_test.cpp: each rule of the records of mpi/distributed/, broken once by
 * hand, is named by its number; bounds of moves against a plain sort. By one rank, under mpirun.
 */
#include "broken.h"
#include "distributed/cluster_rounds.h"
#include "distributed/file_share.h"
#include "distributed/select_moves.h"
#include "distributed/select_nets.h"
#include "distributed/tally.h"
#include "leak_check.h"

#include <cstdlib>
#include <random>

#include <fcntl.h>
#include <unistd.h>

static Ranks alone()
{
    return ranks_of(MPI_COMM_WORLD);
}

/* A path of twelve vertices with a hyperedge of three more; the first vertex is fixed. */
static Level path_level(Ranks *ranks)
{
    Level level = {};
    LooseNets nets;
    level.nvertices = 12;
    level.weight.assign(12, 1);
    level.fixed.assign(12, -1);
    level.fixed[0] = 0;
    for (int64_t v = 0; v + 1 < 12; v++) {
        nets.pins.insert(nets.pins.end(), {v, v + 1});
        nets.ptr.push_back(static_cast<int64_t>(nets.pins.size()));
    }
    nets.pins.insert(nets.pins.end(), {1, 5, 9});
    nets.ptr.push_back(static_cast<int64_t>(nets.pins.size()));
    nets.weight.assign(nets.ptr.size() - 1, 1);
    open_level(ranks, &level, &nets);
    return level;
}

TEST(RanksOk, the_broken_rule_is_named)
{
    Ranks ranks = alone();
    const auto ok = [&] { return ranks_ok(&ranks); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(ranks.rank, 1, ok), "A1") << "no such rank";
    EXPECT_EQ(broken_by(ranks.bytes, 8, ok), "A1") << "sent to itself";
    EXPECT_EQ(broken_by(ranks.messages, 1, ok), "A1");
    EXPECT_EQ(broken_by(ranks.summed, 1, ok), "A1") << "more than all";
    EXPECT_EQ(broken_by(ranks.steps, -1, ok), "A1");
    ranks = {MPI_COMM_WORLD, 2, 5, 100, 8, 40, 2, 0}; // four a step
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(ranks.messages, 9, ok), "A1") << "more than there are receivers";
}

TEST(MailOk, the_broken_rule_is_named)
{
    const Ranks ranks = {MPI_COMM_WORLD, 0, 3, 0, 0, 0, 0, 0};
    Mail<int> mail;
    begin_mail(&ranks, &mail);
    for (const int to : {2, 0, 2}) count_mail(&mail, to);
    open_mail(&mail);
    const auto ok = [&] { return mail_ok(&ranks, mail.first, mail.at, mail.records.size()); };
    for (const int to : {2, 0}) add_mail(&mail, to, 7);
    EXPECT_EQ(broken_rule(ok), "A2") << "counted and not added";
    add_mail(&mail, 2, 7);
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(mail.first[0], 1, ok), "A2");
    EXPECT_EQ(broken_by(mail.first[1], 4, ok), "A2") << "falls";
    EXPECT_EQ(broken_by(mail.first[3], 2, ok), "A2") << "fewer than there are";
    mail.first.pop_back();
    EXPECT_EQ(broken_rule(ok), "A2");
}

TEST(TallyOk, the_broken_rule_is_named)
{
    Tally tally;
    for (int64_t key = 0; key < 20; key++) add_tally(&tally, key * 64, key, -1);
    const auto ok = [&] { return tally_ok(&tally); };
    ASSERT_EQ(broken_rule(ok), "");
    tally.sums.pop_back();
    EXPECT_EQ(broken_rule(ok), "V1");
    tally.sums.push_back(0);
    Tally odd;
    for (std::vector<int64_t> *list : {&odd.keys, &odd.sums, &odd.marks}) list->resize(63, -1);
    EXPECT_EQ(broken_rule([&] { return tally_ok(&odd); }), "V1") << "no power of two";
    const size_t some = static_cast<size_t>(tally.taken[3]);
    EXPECT_EQ(broken_by(tally.keys[some], -1, ok), "V2") << "taken and empty";
    EXPECT_EQ(broken_by(tally.taken[3], tally.taken[4], ok), "V2") << "taken twice";
    EXPECT_EQ(broken_by(tally.keys[some], 1 << 30, ok), "V3") << "not at its place";
    tally.taken.pop_back();
    EXPECT_EQ(broken_rule(ok), "V2") << "there and not taken";
}

TEST(FileShareOk, the_broken_rule_is_named)
{
    char name[] = "/tmp/zorpel-share-XXXXXX";
    const int file = mkstemp(name);
    const std::string text = "2 3\n1 2\n2 3\n";
    ASSERT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(file);
    Ranks ranks = alone();
    FileShare share = {};
    ShareFault fault = {};
    const char *begin, *end;
    ASSERT_TRUE(open_share(&ranks, name, &share, &fault) && set_share(&ranks, 4, &share, &fault) &&
                next_line(&share, &begin, &end, &fault));
    EXPECT_EQ(std::string(begin, end), "1 2");
    const auto ok = [&] { return share_ok(&share); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(share.at, share.filled + 1, ok), "Z1");
    EXPECT_EQ(broken_by(share.filled, share.filled - 1, ok), "Z1");
    EXPECT_EQ(broken_by(share.place, share.place - 1, ok), "Z1") << "other bytes";
    EXPECT_EQ(broken_by(share.place, share.size + 1, ok), "Z1") << "behind the file";
    EXPECT_EQ(broken_by(share.buffer[share.at], 'x', ok), "Z1");
    const int writer = open(name, O_WRONLY); // another program's doing breaks no rule
    ASSERT_EQ(pwrite(writer, "1", 1, 8), 1);
    EXPECT_EQ(broken_rule(ok), "") << "other bytes in the file";
    ASSERT_EQ(ftruncate(writer, 9), 0);
    EXPECT_EQ(broken_rule(ok), "") << "a shorter file";
    close(writer);
    close_share(&share);
    unlink(name);
}

TEST(LevelOk, the_broken_rule_is_named)
{
    Ranks ranks = alone();
    Level level = path_level(&ranks);
    const auto ok = [&] { return level_ok(&ranks, &level); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(level.begin, 1, ok), "D1");
    EXPECT_EQ(broken_by(level.netptr[1], 1, ok), "D2") << "one pin";
    EXPECT_EQ(broken_by(level.netind[0], -1, ok), "D3");
    EXPECT_EQ(broken_by(level.netind[0], level.netind[1], ok), "D3") << "twice";
    EXPECT_EQ(broken_by(level.ghost[1], 0, ok), "D4") << "does not rise";
    EXPECT_EQ(broken_by(level.ghostfirst[1], 3, ok), "D4");
    EXPECT_EQ(broken_by(level.mirror[2], 3, ok), "D5");
    EXPECT_EQ(broken_by(level.incident[4], 9, ok), "D6");
    EXPECT_EQ(broken_by(level.weight[4], -1, ok), "D7");
    EXPECT_EQ(broken_by(level.netweight[4], 0, ok), "D7");
    EXPECT_EQ(broken_by(level.totalweight, 13, ok), "D8");
    EXPECT_EQ(broken_by(level.npins, 1, ok), "D8");
}

TEST(ClusteringOk, the_broken_rule_is_named)
{
    Ranks ranks = alone();
    const Level level = path_level(&ranks);
    Clustering clusters;
    form_clusters(&ranks, &level, 1, 3, 5, nullptr, &clusters);
    ASSERT_LT(clusters.nclusters, 12);
    const auto ok = [&] { return clustering_ok(&ranks, &level, &clusters); };
    ASSERT_EQ(broken_rule(ok), "");
    size_t large = 0; // a leader of several
    while (is_single(clusters.label[large]) ||
           leader_of(clusters.label[large]) != static_cast<int64_t>(large))
        large++;
    EXPECT_EQ(broken_by(clusters.label[large], 24, ok), "L1") << "no such leader";
    EXPECT_EQ(broken_by(clusters.label[large], clusters.label[large] ^ 1, ok), "L1");
    EXPECT_EQ(broken_by(clusters.clusterweight[large], 9, ok), "L2");
    EXPECT_EQ(broken_by(clusters.mostweight, 1, ok), "L3");
    const size_t fixed = static_cast<size_t>(leader_of(clusters.label[0]));
    EXPECT_EQ(broken_by(clusters.clusterfixed[fixed], 1, ok), "L4");
}

TEST(DivisionOk, the_broken_rule_is_named)
{
    Ranks ranks = alone();
    const Level level = path_level(&ranks);
    const Goal goal = {2, Objective::cut, {7, 7}, {5, 5}};
    Division division;
    for (int v = 0; v < 12; v++) division.part.push_back(v / 6);
    load_division(&ranks, &level, &goal, &division);
    const auto ok = [&] { return division_ok(&ranks, &level, &goal, &division); };
    ASSERT_EQ(broken_rule(ok), "");
    EXPECT_EQ(broken_by(division.part[3], 2, ok), "X1");
    EXPECT_EQ(broken_by(division.part[0], 1, ok), "X1") << "fixed elsewhere";
    EXPECT_EQ(broken_by(division.seen[3], 1, ok), "X2");
    EXPECT_EQ(broken_by(division.weight[1], 5, ok), "X3");
}

/* By key, those of one key together, as long as they fit; reach: and those that no longer do. */
static std::vector<Move> selected_plainly(std::vector<Move> moves, std::vector<int64_t> room,
                                          bool reach)
{
    std::stable_sort(moves.begin(), moves.end(),
                     [](const Move &a, const Move &b) { return a.key < b.key; });
    std::vector<Move> kept;
    std::vector<char> full(room.size(), 0);
    for (size_t i = 0, end; i < moves.size(); i = end) {
        std::vector<int64_t> sum(room.size(), 0);
        for (end = i; end < moves.size() && moves[end].key == moves[i].key; end++)
            sum[static_cast<size_t>(moves[end].to)] += moves[end].weight;
        std::vector<char> taken(room.size(), 0);
        for (size_t p = 0; p < room.size(); p++) {
            const bool fits = sum[p] <= std::max<int64_t>(room[p], 0);
            taken[p] = !full[p] && (fits || reach);
            full[p] |= !fits;
            room[p] -= sum[p];
        }
        for (size_t j = i; j < end; j++)
            if (taken[static_cast<size_t>(moves[j].to)]) kept.push_back(moves[j]);
    }
    return kept;
}

TEST(SelectMoves, takes_what_a_plain_sort_takes)
{
    Ranks ranks = alone();
    std::mt19937 chance(7);
    for (int round = 0; round < 400; round++) {
        const int nparts = 1 + static_cast<int>(chance() % 4);
        const uint32_t keys = round % 2 ? UINT32_MAX : 9; // many of one key, too
        std::vector<int64_t> room;
        for (int p = 0; p < nparts; p++) room.push_back(static_cast<int64_t>(chance() % 60) - 5);
        std::vector<Move> moves;
        for (int v = 0; v < 30; v++)
            moves.push_back({v, -1, static_cast<int>(chance() % room.size()),
                             static_cast<uint32_t>(chance() % keys),
                             static_cast<int64_t>(chance() % 6)});
        const bool reach = chance() % 2;
        std::vector<Move> expected = selected_plainly(moves, room, reach);
        select_moves(&ranks, Side::to, room, reach, &moves);
        std::sort(expected.begin(), expected.end(),
                  [](const Move &a, const Move &b) { return a.vertex < b.vertex; });
        ASSERT_EQ(moves.size(), expected.size()) << "round " << round;
        for (size_t i = 0; i < moves.size(); i++) ASSERT_EQ(moves[i].vertex, expected[i].vertex);
    }
}

/* Hyperedges of random sizes and weights among 40 vertices. */
static Level random_level(Ranks *ranks, std::mt19937 *chance)
{
    Level level = {};
    LooseNets nets;
    level.nvertices = 40;
    level.weight.assign(40, 1);
    for (int e = 0; e < 200; e++) {
        const int64_t first = static_cast<int64_t>((*chance)() % 40), size = 2 + (*chance)() % 9;
        for (int64_t i = 0; i < size; i++) nets.pins.push_back((first + 3 * i) % 40);
        nets.ptr.push_back(static_cast<int64_t>(nets.pins.size()));
        nets.weight.push_back(1 + static_cast<int64_t>((*chance)() % 100));
    }
    open_level(ranks, &level, &nets);
    return level;
}

TEST(SelectNets, takes_the_heaviest_for_their_pins_that_fit)
{
    Ranks ranks = alone();
    std::mt19937 chance(3);
    for (int round = 0; round < 50; round++) {
        const Level level = random_level(&ranks, &chance);
        const int64_t most = static_cast<int64_t>(chance() % 1400);
        std::vector<char> in(level.netweight.size(), 0);
        int64_t pins = 0;
        double least = 1e9, best = 0; // weight for each pin of those in, and out
        for (const int e : select_nets(&ranks, &level, most)) in[static_cast<size_t>(e)] = 1;
        for (size_t e = 0; e < in.size(); e++) {
            const int size = level.netptr[e + 1] - level.netptr[e];
            const double each = static_cast<double>(level.netweight[e]) / size;
            pins += in[e] ? size : 0;
            (in[e] ? least : best) = in[e] ? std::min(least, each) : std::max(best, each);
        }
        ASSERT_LE(pins, most);
        if (pins == level.npins) continue;
        ASSERT_GT(pins, most - 200) << "much room is left"; // identical ones stay together
        ASSERT_GT(least * 2, best) << "lighter ones than those that are out"; // in half-octaves
    }
}

TEST(SelectNets, takes_all_that_fit)
{
    Ranks ranks = alone();
    const Level level = path_level(&ranks);
    EXPECT_EQ(select_nets(&ranks, &level, 25).size(), 12u);
    EXPECT_EQ(select_nets(&ranks, &level, 24).size(), 11u) << "without the large one";
    EXPECT_EQ(select_nets(&ranks, &level, 1).size(), 0u);
}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    MPI_Init(&argc, &argv);
    const int failed = RUN_ALL_TESTS();
    check_leaks();
    MPI_Finalize();
    return failed;
}
