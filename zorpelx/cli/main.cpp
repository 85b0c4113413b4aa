/* zorpelx/cli/main.cpp: from the command line to a command and its status. */
#include <cstdio>
#include <cstring>
#include <new>

#include "app.h"
#include "commands.h"
#include "output.h"

/* Standard input can be read once only. */
static void check_standard_input(const Settings &settings)
{
    int count = 0;
    for (const std::string &name :
         {settings.hypergraph, settings.partition, settings.fix, settings.report})
        count += name == "-";
    if (count > 1) fail(STATUS_USAGE, "only one file can come from standard input");
}

static Status run_command(Command command, const Settings &settings)
{
    check_standard_input(settings);
    switch (command) {
    case PARTITION:
        return run_partition(settings);
    case VERIFY:
        return run_verify(settings);
    case LINT:
        return run_lint(settings);
    default:
        return run_stats(settings);
    }
}

/* What is asked for without a command. */
static Status run_alone(const Settings &settings)
{
    if (settings.man)
        fputs(manual_page().c_str(), stdout);
    else if (settings.completion == SHELL_BASH)
        fputs(bash_completion().c_str(), stdout);
    else if (settings.completion == SHELL_ZSH)
        fputs(zsh_completion().c_str(), stdout);
    else
        fail(STATUS_USAGE, "a command is needed: partition, verify, lint or stats; see --help");
    return STATUS_OK;
}

/* Help and version are asked for by an exception of status 0. */
static Status parse_failed(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() == 0) {
        app.exit(error);
        flush_output();
        return STATUS_OK;
    }
    const CommandRow *const row = chosen_command(app);
    fail(STATUS_USAGE, "%s\nSee zorpelx%s%s --help.", error.what(), row ? " " : "",
         row ? row->name : "");
}

static Status run(int nwords, char **words)
{
    Settings settings = fallback_settings();
    const auto app = make_app(&settings);
    try {
        app->parse(nwords, words);
    } catch (const CLI::ParseError &error) {
        return parse_failed(*app, error);
    }
    const CommandRow *const row = chosen_command(*app);
    const Status status =
        row != nullptr ? run_command(row->command, settings) : run_alone(settings);
    flush_output();
    return status;
}

int main(int nwords, char **words)
{
    try {
        return run(nwords, words);
    } catch (const Failure &failure) {
        fflush(stdout);
        fprintf(stderr, "zorpelx: %s\n", failure.text.c_str());
        return failure.status;
    } catch (const std::bad_alloc &) {
        fputs("zorpelx: out of memory\n", stderr);
        return STATUS_MEMORY;
    } catch (const std::length_error &) {
        fputs("zorpelx: out of memory\n", stderr);
        return STATUS_MEMORY;
    } catch (const std::exception &error) {
        fprintf(stderr, "zorpelx: %s\n", error.what());
        return STATUS_FAILED;
    }
}
