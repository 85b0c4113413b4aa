// SPDX-License-Identifier: MIT
/* mpi/distributed/cluster_rounds.cpp: rating, proposing, accepting, in turns.
 *
 * A turn has four exchanges:
 *   1  ranks rate, for their ghosts whose turn it is, the clusters in their hyperedges  -> owners
 *   2  owners add up, and propose each vertex to the best cluster                       -> leaders
 *   3  leaders' owners take what fits and say so                                        -> owners
 *   4  labels that have changed go to the ghosts
 * All sums are of integers, and ties are broken by lots drawn from numbers of vertices, so that
 * neither the order of arrival nor the number of ranks shows.
 */
#include "distributed/cluster_rounds.h"

#include "core/heavy_assert.h"
#include "distributed/senders.h"
#include "distributed/tally.h"

constexpr int ROUNDS = 3, TURNS = 4;
constexpr int SMALL_NET = 50;     // every pin rates every other up to this size,
constexpr int NEIGHBOURS = 8;     // the next ones only in larger hyperedges,
constexpr int LARGEST_NET = 1000; // and none beyond this
constexpr int64_t RATING_ONE = 5040;

struct Rating {
    int vertex; // of the receiver
    int64_t cluster, score;
};

struct Proposal {
    int64_t from, score, weight; // from: global number
    int vertex, fixed;           // the leader, by the receiver's numbers
};

enum Answer { TAKEN, REFUSED };
struct Reply {
    int vertex; // that proposed, by the receiver's numbers
    int answer;
};

struct Rounds {
    Ranks *ranks;
    const Level *level;
    const Division *inside; // or null
    Clustering *clustering;
    uint64_t seed; // of this round
    int turn;
    std::vector<int64_t> seen;       // [nghosts] labels
    std::vector<int> incptr, incind; // hyperedges of the ghosts
    std::vector<int64_t> wanted;     // [own] leader that v proposes to in this turn, -1: none
    std::vector<int64_t> banned;     // [own] leader that has refused v, -1: none
    std::vector<char> changed;       // [own] label
    std::vector<char> rated;         // [own] has had a choice
};

static bool has_turn(const Rounds *rounds, int64_t vertex, int64_t label)
{
    return is_single(label) && leader_of(label) == vertex &&
           lot(rounds->seed, static_cast<uint64_t>(vertex)) % TURNS ==
               static_cast<uint64_t>(rounds->turn);
}

static void list_incidence(const Level *level, std::vector<int> *ptr, std::vector<int> *ind)
{
    ptr->assign(level->ghost.size() + 1, 0);
    ind->resize(level->netind.size());
    for (const int g : level->netind) (*ptr)[static_cast<size_t>(g) + 1]++;
    for (size_t g = 0; g < level->ghost.size(); g++) (*ptr)[g + 1] += (*ptr)[g];
    for (int e = 0; e < nnets_of(level); e++)
        for (int i = level->netptr[static_cast<size_t>(e)];
             i < level->netptr[static_cast<size_t>(e) + 1]; i++)
            (*ind)[static_cast<size_t>(
                (*ptr)[static_cast<size_t>(level->netind[static_cast<size_t>(i)])]++)] = e;
    for (size_t g = level->ghost.size(); g > 0; g--) (*ptr)[g] = (*ptr)[g - 1];
    (*ptr)[0] = 0;
    assert(ptr->back() == static_cast<int>(ind->size()));
}

static bool may_join(const Division *inside, int g, int pin)
{
    return pin != g && (inside == nullptr || inside->seen[static_cast<size_t>(pin)] ==
                                                 inside->seen[static_cast<size_t>(g)]);
}

/* Rates for ghost g what hyperedge e connects it to: each cluster once. */
static void rate_net(const Rounds *rounds, int g, int e, Tally *tally)
{
    const Level *const level = rounds->level;
    const int begin = level->netptr[static_cast<size_t>(e)];
    const int size = level->netptr[static_cast<size_t>(e) + 1] - begin;
    assert(g >= 0 && g < nghosts_of(level) && size >= 2);
    if (size > LARGEST_NET) return;
    const int *const pins = level->netind.data() + begin;
    const int64_t *const seen = rounds->seen.data();
    const int64_t score =
        std::max<int64_t>(level->netweight[static_cast<size_t>(e)] * RATING_ONE / (size - 1), 1);
    int at = 0, n = size;
    if (size > SMALL_NET) {
        while (pins[at] != g) at++;
        assert(at < size && NEIGHBOURS < size);
        n = NEIGHBOURS + 1;
    }
    for (int i = 0; i < n; i++, at = at + 1 < size ? at + 1 : 0)
        if (may_join(rounds->inside, g, pins[at]))
            add_tally(tally, leader_of(seen[pins[at]]), score, e);
}

/* Exchange 1. Ghosts rise, and so do their owners: the mail is in order as it is written. */
static void rate(const Rounds *rounds, Mail<Rating> *mail)
{
    const Level *const level = rounds->level;
    Tally tally;
    mail->first.assign(1, 0);
    for (int r = 0; r < rounds->ranks->nranks; r++) {
        const int64_t begin = share_begin(rounds->ranks, level->nvertices, r);
        for (int64_t i = level->ghostfirst[static_cast<size_t>(r)];
             i < level->ghostfirst[static_cast<size_t>(r) + 1]; i++) {
            const size_t g = static_cast<size_t>(i);
            assert(level->ghost[g] >= begin && level->ghost[g] - begin < INT_MAX);
            if (!has_turn(rounds, level->ghost[g], rounds->seen[g])) continue;
            for (int j = rounds->incptr[g]; j < rounds->incptr[g + 1]; j++)
                rate_net(rounds, static_cast<int>(g), rounds->incind[static_cast<size_t>(j)],
                         &tally);
            for (const int place : tally.taken)
                mail->records.push_back({static_cast<int>(level->ghost[g] - begin),
                                         tally.keys[static_cast<size_t>(place)],
                                         tally.sums[static_cast<size_t>(place)]});
            empty_tally(&tally);
        }
        mail->first.push_back(static_cast<int64_t>(mail->records.size()));
    }
    exchange(rounds->ranks, mail);
}

/* The best of the clusters in tally for vertex; its place there, -1: none will do. */
static int best_place(const Rounds *rounds, int64_t vertex, int64_t banned, const Tally *tally)
{
    int best = -1;
    for (const int i : tally->taken) {
        const size_t place = static_cast<size_t>(i), old = static_cast<size_t>(best);
        const int64_t c = tally->keys[place];
        if (c == banned || c == vertex) continue;
        if (best >= 0) {
            if (tally->sums[place] < tally->sums[old]) continue;
            if (tally->sums[place] == tally->sums[old]) {
                const uint64_t a = lot(rounds->seed, static_cast<uint64_t>(vertex),
                                       static_cast<uint64_t>(c)),
                               b = lot(rounds->seed, static_cast<uint64_t>(vertex),
                                       static_cast<uint64_t>(tally->keys[old]));
                if (a > b || (a == b && c > tally->keys[old])) continue;
            }
        }
        best = i;
    }
    return best;
}

/* Exchange 2. */
static void propose(Rounds *rounds, Mail<Rating> *ratings, Mail<Proposal> *mail)
{
    const Level *const level = rounds->level;
    std::fill(rounds->wanted.begin(), rounds->wanted.end(), -1);
    std::vector<Proposal> proposals;
    Tally tally;
    for_each_vertex(
        *ratings,
        [&](const Rating &rating) { add_tally(&tally, rating.cluster, rating.score, -1); },
        [&](int vertex) {
            const size_t v = static_cast<size_t>(vertex);
            assert(v < rounds->rated.size() && is_single(rounds->clustering->label[v]));
            rounds->rated[v] = 1;
            const int best = best_place(rounds, level->begin + vertex, rounds->banned[v], &tally);
            if (best >= 0) {
                rounds->wanted[v] = tally.keys[static_cast<size_t>(best)];
                proposals.push_back({level->begin + vertex, tally.sums[static_cast<size_t>(best)],
                                     level->weight[v], 0,
                                     level->fixed.empty() ? -1 : level->fixed[v]});
            }
            empty_tally(&tally);
        });
    *ratings = Mail<Rating>();
    begin_mail(rounds->ranks, mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(mail);
        for (Proposal &proposal : proposals) {
            const int64_t c = rounds->wanted[static_cast<size_t>(proposal.from - level->begin)];
            const int owner = share_owner(rounds->ranks, level->nvertices, c);
            if (pass == 0) {
                count_mail(mail, owner);
                continue;
            }
            proposal.vertex =
                static_cast<int>(c - share_begin(rounds->ranks, level->nvertices, owner));
            add_mail(mail, owner, proposal);
        }
    }
    exchange(rounds->ranks, mail);
}

/* Whether leader c stays while the proposals begin to end come to it: it may propose to another
 * itself, and two that propose to each other follow the one of the smaller lot. */
static bool stays(const Rounds *rounds, int64_t c, const Proposal *begin, const Proposal *end)
{
    assert(c >= rounds->level->begin && c < rounds->level->end && begin < end);
    const int64_t wanted = rounds->wanted[static_cast<size_t>(c - rounds->level->begin)];
    assert(wanted != c);
    if (wanted < 0) return true;
    for (const Proposal *p = begin; p != end; p++) {
        if (p->from != wanted) continue;
        const uint64_t mine = lot(rounds->seed, static_cast<uint64_t>(c)),
                       other = lot(rounds->seed, static_cast<uint64_t>(wanted));
        return mine != other ? mine < other : c < wanted;
    }
    return false;
}

/* Takes the vertex that proposes into the cluster of the own leader c, if it may. */
static Answer take(Rounds *rounds, size_t c, const Proposal &proposal)
{
    Clustering *const clustering = rounds->clustering;
    assert(c < clustering->label.size() && proposal.weight >= 0 && proposal.score > 0);
    assert(leader_of(clustering->label[c]) == rounds->level->begin + static_cast<int64_t>(c));
    if (clustering->clusterweight[c] + proposal.weight > clustering->mostweight) return REFUSED;
    if (!clustering->clusterfixed.empty()) {
        int *const fixed = &clustering->clusterfixed[c];
        if (*fixed >= 0 && proposal.fixed >= 0 && *fixed != proposal.fixed) return REFUSED;
        if (proposal.fixed >= 0) *fixed = proposal.fixed;
    }
    clustering->clusterweight[c] += proposal.weight;
    if (is_single(clustering->label[c])) {
        clustering->label[c] |= 1;
        rounds->changed[c] = 1;
    }
    return TAKEN;
}

/* Exchange 3. */
static void accept(Rounds *rounds, Mail<Proposal> *proposals, Mail<Reply> *mail)
{
    const Level *const level = rounds->level;
    std::vector<Proposal> &list = proposals->records;
    std::sort(list.begin(), list.end(), [&](const Proposal &a, const Proposal &b) {
        if (a.vertex != b.vertex) return a.vertex < b.vertex;
        if (a.score != b.score) return a.score > b.score;
        const uint64_t la = lot(rounds->seed, static_cast<uint64_t>(a.from)),
                       lb = lot(rounds->seed, static_cast<uint64_t>(b.from));
        return la != lb ? la < lb : a.from < b.from;
    });
    std::vector<std::pair<int64_t, Answer>> answers;
    for (size_t i = 0, end; i < list.size(); i = end) {
        for (end = i; end < list.size() && list[end].vertex == list[i].vertex;) end++;
        const int64_t c = level->begin + list[i].vertex;
        if (!stays(rounds, c, &list[i], list.data() + end)) continue;
        for (size_t j = i; j < end; j++)
            answers.push_back(
                {list[j].from, take(rounds, static_cast<size_t>(list[j].vertex), list[j])});
    }
    begin_mail(rounds->ranks, mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(mail);
        for (const auto &[vertex, answer] : answers) {
            const int owner = share_owner(rounds->ranks, level->nvertices, vertex);
            if (pass == 0)
                count_mail(mail, owner);
            else
                add_mail(
                    mail, owner,
                    {static_cast<int>(vertex - share_begin(rounds->ranks, level->nvertices, owner)),
                     answer});
        }
    }
    *proposals = Mail<Proposal>();
    exchange(rounds->ranks, mail);
}

/* Returns how many own vertices have joined others. */
static int64_t join(Rounds *rounds, const Mail<Reply> &replies)
{
    int64_t joined = 0;
    for (const Reply &reply : replies.records) {
        const size_t v = static_cast<size_t>(reply.vertex);
        assert(reply.vertex >= 0 && v < rounds->wanted.size() && rounds->wanted[v] >= 0);
        assert(reply.answer == TAKEN || reply.answer == REFUSED);
        if (reply.answer == TAKEN) {
            rounds->clustering->label[v] = 2 * rounds->wanted[v] + 1;
            rounds->changed[v] = 1;
            joined++;
        } else {
            rounds->banned[v] = rounds->wanted[v];
        }
    }
    return joined;
}

/* Returns how many vertices have joined others, over all ranks. */
static int64_t take_turn(Rounds *rounds)
{
    Mail<Rating> ratings;
    Mail<Proposal> proposals;
    Mail<Reply> replies;
    std::fill(rounds->changed.begin(), rounds->changed.end(), 0);
    rate(rounds, &ratings);
    propose(rounds, &ratings, &proposals);
    accept(rounds, &proposals, &replies);
    const int64_t joined = join(rounds, replies);
    assert(joined <= static_cast<int64_t>(replies.records.size()));
    mirror_changes(rounds->ranks, rounds->level, rounds->changed, rounds->clustering->label,
                   &rounds->seen);
    return sum_of_all(rounds->ranks, joined);
}

/* Vertices that nothing connects to others small enough: those of a grain of numbers, which one
 * rank owns, join the first of them that has room. */
static int64_t join_lonely(const Rounds *rounds)
{
    const Level *const level = rounds->level;
    Clustering *const clustering = rounds->clustering;
    int64_t joined = 0;
    size_t leader = 0;
    bool any = false;
    for (size_t v = 0; v < clustering->label.size(); v++) {
        if (v % GRAIN == 0) any = false;
        if (rounds->rated[v] || !is_single(clustering->label[v])) continue;
        const bool alike =
            any && (level->fixed.empty() || level->fixed[v] == level->fixed[leader]) &&
            (rounds->inside == nullptr || rounds->inside->part[v] == rounds->inside->part[leader]);
        if (alike &&
            clustering->clusterweight[leader] + level->weight[v] <= clustering->mostweight) {
            clustering->clusterweight[leader] += level->weight[v];
            clustering->label[v] = 2 * (level->begin + static_cast<int64_t>(leader)) + 1;
            clustering->label[leader] |= 1;
            joined++;
        } else {
            leader = v;
            any = true;
        }
    }
    return sum_of_all(rounds->ranks, joined);
}

static void open_clustering(const Level *level, int64_t mostweight, Clustering *clustering)
{
    clustering->mostweight = mostweight;
    clustering->nclusters = level->nvertices;
    clustering->label.resize(level->weight.size());
    for (size_t v = 0; v < level->weight.size(); v++)
        clustering->label[v] = 2 * (level->begin + static_cast<int64_t>(v));
    clustering->clusterweight = level->weight;
    clustering->clusterfixed = level->fixed;
}

void form_clusters(Ranks *ranks, const Level *level, uint64_t seed, int64_t mostweight,
                   int64_t enough, const Division *inside, Clustering *clustering)
{
    assert(mostweight > 0 && enough >= 0);
    open_clustering(level, mostweight, clustering);
    const size_t nown = level->weight.size();
    Rounds rounds = {ranks, level, inside, clustering, 0, 0, {}, {}, {}, {}, {}, {}, {}};
    rounds.wanted.assign(nown, -1);
    rounds.banned.assign(nown, -1);
    rounds.changed.assign(nown, 0);
    rounds.rated.assign(nown, 0);
    list_incidence(level, &rounds.incptr, &rounds.incind);
    mirror_values(ranks, level, clustering->label, &rounds.seen);
    for (int round = 0; round < ROUNDS && clustering->nclusters > enough; round++) {
        rounds.seed = lot(seed, static_cast<uint64_t>(round));
        const int64_t before = clustering->nclusters;
        for (rounds.turn = 0; rounds.turn < TURNS && clustering->nclusters > enough; rounds.turn++)
            clustering->nclusters -= take_turn(&rounds);
        if (clustering->nclusters > before - before / 100) break;
    }
    // whose turn has not come has had no choice; those who had no turn are told from the lonely
    for (size_t v = 0; v < nown; v++)
        rounds.rated[v] |= level->incident[v] > 0 && rounds.turn < TURNS;
    clustering->nclusters -= join_lonely(&rounds);
    assert(clustering->nclusters <= level->nvertices);
    assert(clustering->nclusters > 0 || level->nvertices == 0);
    HEAVY_ASSERT(clustering_ok(ranks, level, clustering));
}
