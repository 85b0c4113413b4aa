// SPDX-License-Identifier: MIT
/* zorpelx/cli/main.cpp: from the command line to a command and its status. */
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "app.h"
#include "commands.h"
#include "escaped.h"
#include "json.h"
#include "output.h"
#include "version.h"
#include "words.h"

/* Standard input can be read once only. */
static void check_standard_input(Command command, const Settings &settings)
{
    int64_t count = command != PARTITION && settings.record == "-"; // which writes it
    for (const std::string &name :
         {settings.hypergraph, settings.partition, settings.other, settings.fix, settings.report})
        count += name == "-";
    count += settings.history == "-";
    count += std::count(settings.partitions.begin(), settings.partitions.end(), "-");
    if (count > 1) fail(STATUS_USAGE, "only one file can come from standard input");
}

static Status run_command(Command command, const Settings &settings)
{
    check_standard_input(command, settings);
    switch (command) {
    case PARTITION:
        return run_partition(settings);
    case VERIFY:
        return run_verify(settings);
    case LINT:
        return run_lint(settings);
    case REPLAY:
        return run_replay(settings);
    case CONVERT:
        return run_convert(settings);
    case ANNOTATE:
        return run_annotate(settings);
    case SWEEP:
        return run_sweep(settings);
    case COMPARE:
        return run_compare(settings);
    case EXPLAIN:
        return run_explain(settings);
    case REPORT:
        return run_report(settings);
    case MERGE:
        return run_merge(settings);
    default:
        return run_stats(settings);
    }
}

/* Who asked for JSON gets it, whatever happens; partition does that by itself. */
static Status run_and_answer(Command command, const Settings &settings)
{
    try {
        return run_command(command, settings);
    } catch (...) {
        const Failure failure = current_failure();
        const bool asked =
            command != PARTITION && command != MERGE && command != REPORT &&
            settings.format == FORMAT_JSON;
        if (asked && failure.status != STATUS_USAGE)
            fputs(json_text(answer_json(settings, command, failure.status, failure.text)).c_str(),
                  stdout);
        throw;
    }
}

/* "partition, verify or lint" */
static std::string command_list()
{
    std::string list;
    for (size_t i = 0; i < COMMANDS.size(); i++)
        list += std::string(i == 0                    ? ""
                            : i + 1 < COMMANDS.size() ? ", "
                                                      : " or ") +
                COMMANDS[i].name;
    return list;
}

/* What is asked for without a command. */
static Status run_alone(const Settings &settings)
{
    if (settings.completion == SHELL_BASH)
        fputs(bash_completion().c_str(), stdout);
    else if (settings.completion == SHELL_ZSH)
        fputs(zsh_completion().c_str(), stdout);
    else
        fail(STATUS_USAGE, "a command is needed: %s; see --help", command_list().c_str());
    flush_output();
    return STATUS_OK;
}

static Status print(const std::string &text)
{
    fputs(text.c_str(), stdout);
    flush_output();
    return STATUS_OK;
}

static Status run(std::vector<std::string> words)
{
    if (asks_for_manual(words)) return print(manual_page());
    words = without_help_command(words);
    Settings settings = fallback_settings();
    settings.words = words;
    const ParsedWords parsed = parse_words(words, &settings);
    const CommandRow *const row = parsed.command;
    if (parsed.wish == WISH_VERSION) return print("zorpelx " ZORPELX_CLI_VERSION "\n");
    if (parsed.wish == WISH_HELP) return print(row != nullptr ? help_of(*row) : help_of_all());
    if (parsed.wish == WISH_UNCLEAR) refuse_words(parsed, words);
    if (row == nullptr) return run_alone(settings);
    const Status status = run_and_answer(static_cast<Command>(row->command), settings);
    flush_output();
    return status;
}

/* A standard stream that is closed must not become a file that the program opens; what is read
 * from it or written to it fails as before. */
static void hold_standard_streams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
    }
}

int main(int nwords, char **words)
{
    hold_standard_streams();
    signal(SIGXFSZ, SIG_IGN); // a write past a file size limit fails, and that is reported
    try {
        return run(std::vector<std::string>(words + std::min(nwords, 1), words + nwords));
    } catch (...) {
        const Failure failure = current_failure();
        tell(failure.text);
        return failure.status;
    }
}
