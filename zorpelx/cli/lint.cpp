// SPDX-License-Identifier: MIT
/* zorpelx/cli/lint.cpp: the lint command: findings, the clean file, and advice on balance. */
#include <algorithm>
#include <climits>
#include <cstdio>

#include "advice.h"
#include "casts.h"
#include "commands.h"
#include "escaped.h"
#include "hypergraph.h"
#include "input.h"
#include "json.h"
#include "output.h"
#include "partfiles.h"
#include "parts_by_name.h"
#include "suggest.h"
#include "told.h"
#include "write_hgr.h"

constexpr size_t MOST_HEAVY = 10; // heavy vertices shown

/* What was found in the files of one call. */
struct Lint {
    Hypergraph graph;
    std::vector<int64_t> fix;
    Findings findings, fixfindings;
    Judgement judgement; // what zorpel makes of the hypergraph file
};

/* Text in lines of at most 78 characters, each behind two blanks. */
static std::string wrapped(const std::string &text)
{
    constexpr size_t WIDTH = 76;
    std::string out;
    for (size_t from = 0, end; from < text.size(); from = end + 1) {
        end = text.size();
        if (end - from > WIDTH) end = text.rfind(' ', from + WIDTH);
        out += "  " + text.substr(from, end - from) + '\n';
    }
    return out;
}

static void explain(const Rule &rule)
{
    printf("%s %s (%s): %s.\n%s", rule.id, rule.name, severity_name(rule.severity), rule.title,
           wrapped(rule.explanation).c_str());
}

static std::vector<std::string> rule_names()
{
    std::vector<std::string> names;
    for (const Rule &rule : RULES) names.push_back(rule.name);
    return names;
}

static Status explain_rules(const std::string &word)
{
    if (word == "all") {
        for (const Rule &rule : RULES) explain(rule);
        return STATUS_OK;
    }
    const Rule *const rule = find_rule(word);
    if (rule == nullptr)
        fail(STATUS_USAGE, "there is no rule '%s'%s", escaped(word).c_str(),
             suggestion(word, rule_names()).c_str());
    explain(*rule);
    return STATUS_OK;
}

static int64_t found(const Lint &lint, Severity severity)
{
    return lint.findings.severities[severity] + lint.fixfindings.severities[severity];
}

static int64_t found_errors(const Lint &lint)
{
    return count_errors(lint.findings) + count_errors(lint.fixfindings);
}

static bool are_bad(const Findings &findings, bool strict)
{
    return refusal(findings, strict, false) != nullptr;
}

static bool is_bad(const Lint &lint, bool strict)
{
    return are_bad(lint.findings, strict) || are_bad(lint.fixfindings, strict);
}

/* All notes in one line. */
static void print_notes_summed(const std::string &file, const Findings &findings)
{
    std::string text;
    for (int rule = 0; rule < NRULES; rule++)
        if (findings.met[rule][NOTE])
            text += text_of("%s%lld x %s %s", text.empty() ? "" : ", ", ll(findings.count[rule]),
                            RULES[rule].id, RULES[rule].name);
    if (!text.empty())
        printf("%s: notes: %s (--notes shows them)\n", shown_name(file).c_str(), text.c_str());
}

static void print_findings(const std::string &file, const Findings &findings, bool notes)
{
    int64_t shown[NRULES] = {};
    for (const Finding &finding : findings.listed) {
        if (finding.severity == NOTE && !notes) continue;
        puts(finding_line(shown_name(file), finding).c_str());
        shown[finding.rule]++;
    }
    for (int rule = 0; rule < NRULES; rule++)
        if (shown[rule] > 0 && findings.count[rule] > shown[rule])
            printf("%s: %s %s: %lld more (--limit 0 shows them)\n", shown_name(file).c_str(),
                   RULES[rule].id, RULES[rule].name, ll(findings.count[rule] - shown[rule]));
    if (!notes) print_notes_summed(file, findings);
}

static const char *ending(int64_t count)
{
    return count == 1 ? "" : "s";
}

static const char *judgement_text(Judgement judgement)
{
    static const char *const texts[] = {"reads", "refuses", "was not asked about"};
    return texts[judgement];
}

static void print_summary(const Lint &lint)
{
    if (lint.graph.provenance.format != format_rows()[0].name) {
        printf("%lld error%s, %lld warning%s, %lld note%s; zorpelx convert writes the hypergraph "
               "for zorpel\n",
               ll(found_errors(lint)), ending(found_errors(lint)), ll(found(lint, WARNING)),
               ending(found(lint, WARNING)), ll(found(lint, NOTE)), ending(found(lint, NOTE)));
        return;
    }
    const int64_t errors = found_errors(lint), warnings = found(lint, WARNING),
                  notes = found(lint, NOTE);
    printf("%lld error%s, %lld warning%s, %lld note%s; zorpel %s the hypergraph\n", ll(errors),
           ending(errors), ll(warnings), ending(warnings), ll(notes), ending(notes),
           judgement_text(lint.judgement));
}

static const char *judgement_name(Judgement judgement)
{
    static const char *const names[] = {"reads", "refuses", "unknown"};
    return names[judgement];
}

static Json findings_json(const std::string &file, const Findings &findings)
{
    Json list = Json::array();
    for (const Finding &finding : findings.listed)
        list.push_back({{"file", file},
                        {"line", finding.place.line},
                        {"column", finding.place.column},
                        {"severity", severity_name(finding.severity)},
                        {"rule", RULES[finding.rule].id},
                        {"name", RULES[finding.rule].name},
                        {"forcible", finding.severity == LOSS},
                        {"text", finding.text}});
    return list;
}

/* Rules that were broken, with how often. */
static Json counts_json(const Lint &lint)
{
    Json counts = Json::object();
    for (int rule = 0; rule < NRULES; rule++) {
        const int64_t count = lint.findings.count[rule] + lint.fixfindings.count[rule];
        if (count > 0) counts[RULES[rule].id] = count;
    }
    return counts;
}

static const char *verdict_name(Verdict verdict)
{
    static const char *const names[] = {"feasible", "infeasible", "undecided"};
    return names[verdict];
}

static double share_percent(int64_t weight, int64_t total)
{
    return total == 0 ? 0 : 100 * static_cast<double>(weight) / static_cast<double>(total);
}

static void print_limits(const PartRanges &limits, int64_t total)
{
    printf("\n  part      least     most   share of the weight\n");
    const size_t nparts = limits.least.size();
    for (size_t p = 0; p < nparts; p++)
        if (nparts <= 64 || p < 8)
            printf("  %4zu %10lld %8lld   %6.2f %% to %.2f %%\n", p, ll(limits.least[p]),
                   ll(limits.most[p]), share_percent(limits.least[p], total),
                   share_percent(limits.most[p], total));
    if (nparts > 64) printf("   ... %zu parts more\n", nparts - 8);
    printf("  all  %10lld %8lld   %s\n", ll(limits.lightest), ll(limits.heaviest),
           nparts > 2 && nparts <= MOST_POLISHED ? "with the refinement of all parts at the end"
                                                 : "");
}

static void print_heavy(const Hypergraph &graph, int64_t first)
{
    const std::vector<int64_t> &weights = graph.vertexwgt;
    const std::vector<int64_t> heavy = heavy_vertices(weights);
    if (heavy.empty()) return;
    printf("\n  Vertices heavier than a fiftieth of all, which are never merged: %zu\n",
           heavy.size());
    for (size_t i = 0; i < heavy.size() && i < MOST_HEAVY; i++)
        printf("    vertex %s weighs %lld\n", escaped(vertex_label(graph, heavy[i], first)).c_str(),
               ll(weights[static_cast<size_t>(heavy[i])]));
    if (heavy.size() > MOST_HEAVY) puts("    ...");
}

/* The factor that keeps the parts within --epsilon, or why there is none. */
static std::string keep_text(const Settings &settings, int64_t total)
{
    const int factor = largest_factor(settings.nparts, total, settings.epsilon);
    if (factor == 0) return no_factor_text(settings.nparts, total, settings.epsilon);
    return text_of("--ubfactor %d keeps %lld parts within %g %% of the average (%.2f %%)", factor,
                   ll(settings.nparts), settings.epsilon,
                   worst_excess(part_ranges(settings.nparts, factor, total), total));
}

static void print_advice(const Settings &settings, const Lint &lint, const Advice &advice)
{
    const int64_t total = total_weight(lint.graph.vertexwgt);
    printf("\n%lld parts with --ubfactor %lld, all vertices weigh %lld, a part %.1f on average:\n",
           ll(settings.nparts), ll(settings.ubfactor), ll(total),
           static_cast<double>(total) / static_cast<double>(settings.nparts));
    print_limits(advice.limits, total);
    printf("  the heaviest part can be %.2f %% above the average\n",
           worst_excess(advice.limits, total));
    print_heavy(lint.graph, first_vertex(settings));
    if (was_given(settings, &Settings::epsilon))
        printf("\n  %s\n", keep_text(settings, total).c_str());
    printf("\n  %s: %s\n", verdict_name(advice.verdict), advice.reason.c_str());
}

static Json advice_json(const Settings &settings, const Lint &lint, const Advice &advice)
{
    const int64_t total = total_weight(lint.graph.vertexwgt);
    std::vector<int64_t> heavy = heavy_vertices(lint.graph.vertexwgt);
    for (int64_t &vertex : heavy) vertex += first_vertex(settings); // as the file numbers them
    Json json = {{"nparts", settings.nparts},
                 {"ubfactor", settings.ubfactor},
                 {"total_weight", total},
                 {"least", advice.limits.least},
                 {"most", advice.limits.most},
                 {"lightest", advice.limits.lightest},
                 {"heaviest", advice.limits.heaviest},
                 {"excess_percent", worst_excess(advice.limits, total)},
                 {"heavy_vertices", heavy},
                 {"verdict", verdict_name(advice.verdict)},
                 {"reason", advice.reason}};
    if (was_given(settings, &Settings::epsilon)) {
        json["epsilon"] = settings.epsilon;
        json["epsilon_ubfactor"] = largest_factor(settings.nparts, total, settings.epsilon);
    }
    return json;
}

/* Worth keeping in the clean file: it can be cut, and it matters. */
static bool worth(const Hypergraph &graph, int64_t e)
{
    return net_size(graph, e) > 1 && graph.netwgt[static_cast<size_t>(e)] > 0;
}

/* Lines that zorpel would not read at once. */
static void tell_long_lines(const std::string &text)
{
    int64_t number = 0;
    for (size_t begin = 0, end; begin < text.size(); begin = end, number++) {
        end = text.find('\n', begin) + 1;
        if (static_cast<int64_t>(end - begin) > PIECE)
            fprintf(
                stderr,
                "zorpelx: line %lld of the clean file has more than %lld characters too: zorpel "
                "reads it in pieces\n",
                ll(number + 1), ll(PIECE));
    }
}

static std::string map_name(const Settings &settings)
{
    if (!settings.map.empty()) return settings.map;
    const bool none = settings.clean.empty() || is_stream_name(settings.clean);
    return none ? "" : settings.clean + ".map";
}

/* Errors of which the clean file is free, with nothing lost. */
static bool is_mended(RuleIndex rule)
{
    return rule == RULE_EMPTY_NET || rule == RULE_LONG_LINE || rule == RULE_MARK ||
           rule == RULE_NO_ROOM;
}

/* What leaves nothing sensible to write; with force a loss is accepted. */
static const Finding *beyond_mending(const Findings &findings, bool force)
{
    for (const Finding &finding : findings.listed)
        if (finding.severity >= (force ? ERROR : LOSS) && !is_mended(finding.rule)) return &finding;
    return nullptr;
}

/* Writes the clean file and the map back; returns what there is to say about them. */
static std::string write_clean(const Settings &settings, const Lint &lint, const Writer &writer)
{
    const Finding *const bad = beyond_mending(lint.findings, settings.force);
    if (bad != nullptr)
        fail(STATUS_BAD_INPUT, "no clean file is written: %s%s",
             finding_line(shown_name(settings.hypergraph), *bad).c_str(),
             bad->severity == LOSS ? " (--force writes what zorpel reads)" : "");
    std::string map;
    int64_t nkept = 0;
    const Hypergraph clean = with_nets(lint.graph, [&](int64_t e) {
        if (!worth(lint.graph, e)) return false;
        map += std::to_string(e + 1) + '\n';
        nkept++;
        return true;
    });
    const std::string text = hgr_text(clean);
    tell_long_lines(text);
    write_together(writer, {text, map});
    return text_of("%s: %lld of %s; vertices keep their order",
                   shown_output(settings.clean).c_str(), ll(nkept),
                   counted(lint.graph.nnets, "hyperedge", "hyperedges").c_str());
}

static void scan_hypergraph_file(const Settings &settings, Lint *lint)
{
    Budget budget = budget_for(settings, settings.hypergraph);
    Reading reading = reading_of(settings);
    reading.notes = true;
    lint->findings.budget = &budget;
    const Bytes bytes = read_bytes(settings.hypergraph, &budget);
    lint->graph = read_any(view_of(bytes), format_of(settings), reading, &lint->findings, &budget);
    lint->judgement = JUDGED_REFUSED; // zorpel reads its own format only
    if (lint->graph.provenance.format == format_rows()[0].name)
        lint->judgement = judge(view_of(bytes), reading, lint->findings, &budget);
    lint->findings.budget = nullptr;
}

static void scan_fix_file(const Settings &settings, Lint *lint)
{
    Budget budget = budget_for(settings, settings.fix);
    const Bytes bytes = read_bytes(settings.fix, &budget);
    const std::string_view text = view_of(bytes);
    if (!has_parts_by_name(text)) {
        lint->fix = scan_fix(text, lint->graph.nvertices, settings.nparts, &lint->fixfindings,
                             &budget);
        return;
    }
    const int64_t nparts = settings.nparts > 0 ? settings.nparts : INT_MAX;
    lint->fix = scan_parts_by_name(text, labels_of(lint->graph), {nparts, true}, &budget);
    tell_note(&lint->fixfindings, {1, 1}, "a table of names, which zorpelx reads and zorpel does not");
}

static Lint scan_files(const Settings &settings)
{
    Lint lint = {};
    lint.findings.most = lint.fixfindings.most = settings.limit;
    or_fail([&] { scan_hypergraph_file(settings, &lint); });
    if (!settings.fix.empty() && lint.graph.nvertices > 0)
        or_fail([&] { scan_fix_file(settings, &lint); });
    sort_by_place(&lint.findings);
    sort_by_place(&lint.fixfindings);
    return lint;
}

static std::string lint_json(const Settings &settings, const Lint &lint, const Advice *advice,
                             const Failure &outcome)
{
    Json json = answer_json(settings, LINT, outcome.status, outcome.text);
    json.update({{"zorpel", judgement_name(lint.judgement)},
                 {"errors", found_errors(lint)},
                 {"warnings", found(lint, WARNING)},
                 {"notes", found(lint, NOTE)},
                 {"counts", counts_json(lint)},
                 {"findings", findings_json(settings.hypergraph, lint.findings)}});
    for (Json &finding : findings_json(settings.fix, lint.fixfindings))
        json["findings"].push_back(finding);
    if (advice != nullptr) json["advice"] = advice_json(settings, lint, *advice);
    return json_text(json);
}

static void print_answer(const Settings &settings, const Lint &lint, const Advice *advice)
{
    if (!settings.quiet || is_bad(lint, settings.strict)) {
        print_findings(settings.hypergraph, lint.findings, settings.notes);
        print_findings(settings.fix, lint.fixfindings, settings.notes);
    }
    if (!settings.quiet) print_summary(lint);
    if (advice != nullptr) print_advice(settings, lint, *advice);
}

/* Writes the clean file if one is wanted. The text is what there is to say about it. */
static Failure mend(const Settings &settings, const Lint &lint, const Writer &writer,
                    bool infeasible)
{
    Failure outcome = {infeasible ? STATUS_INFEASIBLE : STATUS_OK, ""};
    bool mended = false;
    try {
        if (!settings.clean.empty()) {
            outcome.text = write_clean(settings, lint, writer);
            mended = !are_bad(lint.fixfindings, settings.strict);
        }
    } catch (...) {
        return current_failure();
    }
    if (settings.quiet) outcome.text.clear();
    if (is_bad(lint, settings.strict) && !mended) outcome.status = STATUS_BAD_INPUT;
    return outcome;
}

Status run_lint(const Settings &settings)
{
    if (!settings.explain.empty()) return explain_rules(settings.explain);
    if (settings.hypergraph.empty())
        fail(STATUS_USAGE, "lint needs a hypergraph file or --explain");
    if (settings.nparts == 0 && was_given(settings, &Settings::epsilon))
        fail(STATUS_USAGE, "--epsilon needs -k");
    if (!settings.map.empty() && settings.clean.empty()) fail(STATUS_USAGE, "--map needs --fix");
    const Writer writer =
        open_writer({settings.clean, map_name(settings)}, {settings.hypergraph, settings.fix});
    const bool taken = standard_output_taken(writer);
    if (taken && settings.format == FORMAT_JSON)
        fail(STATUS_USAGE, "the clean file and --format json both want standard output");
    const Lint lint = scan_files(settings);
    const bool readable = found_errors(lint) == 0;
    const bool asked = settings.nparts > 0 && readable;
    Advice advice = {};
    if (asked)
        advice = advise(lint.graph.vertexwgt, lint.fix, settings.nparts,
                        static_cast<int>(settings.ubfactor));
    const Failure outcome = mend(settings, lint, writer, asked && advice.verdict == INFEASIBLE);
    if (settings.format == FORMAT_JSON)
        fputs(lint_json(settings, lint, asked ? &advice : nullptr, outcome).c_str(), stdout);
    else if (!taken)
        print_answer(settings, lint, asked ? &advice : nullptr);
    if (!outcome.text.empty()) tell(outcome.text);
    return outcome.status;
}
