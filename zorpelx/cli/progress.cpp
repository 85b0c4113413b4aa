// SPDX-License-Identifier: MIT
/* zorpelx/cli/progress.cpp: the progress line of a run.
 *
 * The work is counted in runs of bisections. They are not all equal: the later ones are shorter,
 * and refinement of all parts follows, so the time left is rather too long than too short, and
 * nothing is called done before it is.
 */
#include "progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

#include "failure.h"

constexpr int USUAL_WIDTH = 80;
constexpr int LEAST_WIDTH = 10; // what claims to be narrower does not know its width

static bool on_terminal()
{
    return isatty(STDERR_FILENO) == 1;
}

/* A terminal that cannot rewrite its line, such as the shell of an editor. */
static bool is_dumb()
{
    const char *const term = getenv("TERM");
    return term == nullptr || term[0] == '\0' || strcmp(term, "dumb") == 0;
}

static int terminal_width()
{
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= LEAST_WIDTH)
        return size.ws_col;
    const char *const columns = getenv("COLUMNS");
    const int width = columns == nullptr ? 0 : atoi(columns);
    return width >= LEAST_WIDTH ? width : USUAL_WIDTH;
}

static double share_done(const zorpelx_progress &progress)
{
    constexpr double MOST = 0.99; // it is not over yet
    const double finished = static_cast<double>(progress.finished) / std::max(progress.starts, 1);
    if (progress.jobs > 0) // of a search
        return std::min(finished + (1 - finished) *
                                       (progress.alljobs > 0
                                            ? progress.jobs / static_cast<double>(progress.alljobs)
                                            : 0),
                        MOST);
    if (progress.allruns <= 0) return 0;
    const double share = static_cast<double>(progress.runs) / static_cast<double>(progress.allruns);
    return std::min(std::max(share, finished), MOST);
}

/* "45 s", "3:20", "2 h 05" */
static std::string duration(double seconds)
{
    if (seconds < 99.5) return text_of("%.0f s", seconds);
    const double minutes = std::floor(seconds / 60);
    if (minutes < 100) return text_of("%.0f:%02.0f", minutes, std::floor(seconds - 60 * minutes));
    if (minutes < 6000)
        return text_of("%.0f h %02.0f", std::floor(minutes / 60), std::fmod(minutes, 60));
    return text_of("%.0f days", minutes / (60 * 24));
}

/* What the speed so far promises, or the deadline if that comes first. */
static std::string time_left(const zorpelx_progress &progress, double timeout)
{
    constexpr double SOON = 0.3; // seconds: too early to tell
    const double share = share_done(progress);
    double left =
        share > 0 && progress.seconds > SOON ? progress.seconds * (1 - share) / share : -1;
    if (timeout > 0 && (left < 0 || progress.seconds + left > timeout))
        left = std::max(timeout - progress.seconds, 0.0);
    return left < 0 ? "" : duration(left) + " left";
}

std::string progress_text(const zorpelx_progress &progress, bool search, double timeout, int width)
{
    std::vector<std::string> pieces = {text_of("%.0f %%", std::floor(100 * share_done(progress))),
                                       time_left(progress, timeout)};
    if (progress.starts > 1)
        pieces.push_back(text_of("%d of %d starts", progress.finished, progress.starts));
    if (progress.objective >= 0 && progress.step != nullptr && progress.step[0] != '\0')
        pieces.push_back(
            text_of("best %lld by %s", static_cast<long long>(progress.objective), progress.step));
    else if (progress.cut >= 0)
        pieces.push_back(text_of("cut %lld", static_cast<long long>(progress.cut)));
    else if (progress.run_cut >= 0)
        pieces.push_back(text_of("bisection %d", progress.run_cut));
    if (search)
        pieces.push_back(text_of("%d jobs", progress.jobs));
    else
        pieces.push_back(text_of("%lld of %lld runs", static_cast<long long>(progress.runs),
                                 static_cast<long long>(progress.allruns)));
    pieces.push_back(text_of("%.1f s", progress.seconds));
    std::string line;
    for (const std::string &piece : pieces) {
        if (piece.empty()) continue;
        const std::string more = line.empty() ? piece : ", " + piece;
        if (line.size() + more.size() >= static_cast<size_t>(width)) break;
        line += more;
    }
    return line;
}

bool wants_progress(const Settings &settings)
{
    if (settings.progress == PROGRESS_AUTO) return !settings.quiet && on_terminal() && !is_dumb();
    return settings.progress == PROGRESS_ALWAYS;
}

/* Columns of the line on the terminal. */
static size_t shown_width = 0;

static void rewrite(const std::string &line)
{
    const std::string rest(shown_width > line.size() ? shown_width - line.size() : 0, ' ');
    const std::string back(rest.size(), '\b');
    fprintf(stderr, "\r%s%s%s", line.c_str(), rest.c_str(), back.c_str());
    fflush(stderr);
    shown_width = line.size();
}

/* For files and pipes: not the same percent twice, but every start. */
static void print_if_new(const zorpelx_progress &progress, const std::string &line)
{
    static int last_percent = -1, last_finished = -1;
    const int percent = static_cast<int>(100 * share_done(progress));
    if (percent == last_percent && progress.finished == last_finished) return;
    last_percent = percent;
    last_finished = progress.finished;
    fprintf(stderr, "%s\n", line.c_str());
}

int show_progress(void *user, const zorpelx_progress *progress)
{
    const Settings *const settings = static_cast<const Settings *>(user);
    const bool terminal = on_terminal();
    const std::string line = progress_text(*progress, !wants_engine(*settings), settings->timeout,
                                           terminal ? terminal_width() : USUAL_WIDTH);
    if (terminal)
        rewrite(line);
    else
        print_if_new(*progress, line);
    return 0;
}

void clear_progress()
{
    if (!on_terminal()) return;
    rewrite("");
    fputs("\r", stderr);
}
