// SPDX-License-Identifier: MIT
/* zorpelx/files/read_verilog.cpp: structural Verilog, through Yosys where it is installed. */
#include "read_verilog.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "bytes.h"
#include "fileerror.h"
#include "json_scan.h"
#include "read_yosys.h"
#include "run_tool.h"
#include "zorpelx.h"

/* The name of the file never is among the words: the text goes through standard input. Instances of
 * modules that the text does not have stay as they are, cells of the library. */
static std::vector<std::string> yosys_words(const Reading &reading)
{
    const std::string hierarchy =
        reading.top.empty() ? "hierarchy -auto-top" : "hierarchy"; // the JSON reader takes the top
    return {"yosys", "-q",   "-f", "verilog -sv", "-p", hierarchy + "; proc",
            "-b",    "json", "-o", "-",           "-"};
}

/* "<stdin>:5: ERROR: syntax error" as "FILE:5: syntax error"; the last line that says ERROR. */
static std::string complaint(const std::string &errors, const std::string &name)
{
    constexpr std::string_view STREAM = "<stdin>:", ERROR = "ERROR: ";
    const size_t error = errors.rfind(ERROR);
    if (error == std::string::npos) return name + ": Yosys cannot read it";
    const size_t line = errors.rfind('\n', error) + 1;
    const size_t end = std::min(errors.find('\n', error), errors.size());
    const std::string text = errors.substr(error + ERROR.size(), end - error - ERROR.size());
    std::string place = errors.substr(line, error - line);
    const size_t stream = place.find(STREAM);
    if (stream == std::string::npos) return name + ": Yosys says: " + text;
    place = place.substr(stream + STREAM.size());
    place = place.substr(0, place.find_first_not_of("0123456789."));
    return name + ":" + place + ": Yosys says: " + text;
}

static std::string working_folder(const std::string &path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return "";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/* Yosys puts the name of the file into names that it makes. */
static std::string with_name_of(const std::string &json, const std::string &path)
{
    constexpr std::string_view STREAM = "<stdin>";
    const std::string base = path == "-" ? "stdin" : path.substr(path.rfind('/') + 1);
    const std::string name = json_quoted(base).substr(1, json_quoted(base).size() - 2);
    std::string text;
    size_t copied = 0;
    for (size_t i = json.find(STREAM); i != std::string::npos; i = json.find(STREAM, copied)) {
        text.append(json, copied, i - copied).append(name);
        copied = i + STREAM.size();
    }
    return text.append(json, copied, std::string::npos);
}

static std::string json_from_yosys(std::string_view bytes, const Reading &reading, Budget *budget)
{
    const ToolResult result =
        run_tool(yosys_words(reading), working_folder(reading.path), bytes, budget);
    if (!result.started)
        file_error(ZORPELX_BAD_INPUT,
                   "%s: Verilog is read through Yosys, which is not installed (on Debian: apt-get "
                   "install yosys)",
                   budget->name.c_str());
    if (result.status != 0)
        file_error(ZORPELX_BAD_INPUT, "%s", complaint(result.errors, budget->name).c_str());
    return with_name_of(result.output, reading.path);
}

Hypergraph read_verilog(std::string_view bytes, const Reading &reading, Findings *findings,
                        Budget *budget)
{
    const std::string json = json_from_yosys(without_mark(bytes), reading, budget);
    return read_yosys(json, reading, findings, budget);
}

/* The text from its first word on, behind white space, comments and attributes. */
static std::string_view from_first_token(std::string_view text)
{
    for (;;) {
        text.remove_prefix(
            std::min(text.find_first_not_of(" \t\r\n\v\f\xef\xbb\xbf"), text.size()));
        std::string_view end;
        if (text.substr(0, 2) == "//") end = "\n";
        if (text.substr(0, 2) == "/*") end = "*/";
        if (text.substr(0, 2) == "(*") end = "*)";
        if (end.empty()) return text;
        const size_t found = text.find(end, 2);
        if (found == std::string_view::npos) return "";
        text.remove_prefix(found + end.size());
    }
}

Recognised recognise_verilog(std::string_view bytes)
{
    constexpr size_t LOOKED_AT = size_t{1} << 16;
    const std::string_view text = from_first_token(bytes.substr(0, LOOKED_AT));
    for (const std::string_view word : {"module", "macromodule", "`timescale", "`define",
                                        "`include", "`default_nettype", "`celldefine", "`ifdef"}) {
        const bool ends = text.size() > word.size() &&
                          isspace(static_cast<unsigned char>(text[word.size()])) != 0;

        if (text.substr(0, word.size()) == word && ends) return CERTAIN;
    }
    return UNLIKE;
}
