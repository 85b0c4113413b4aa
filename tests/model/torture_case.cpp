// SPDX-License-Identifier: MIT
/* model/torture_case.cpp: cases and their text form.
 *
 * The text is words: each field's name, then its numbers; lists begin with their length, a null
 * array is the word null. Lines that begin with # are notes.
 */
#include "torture_case.h"

#include <fstream>
#include <sstream>

static const char *const MAGIC = "zorpel-case-1";

Case empty_case()
{
    Case c = {};
    c.family = "none";
    c.eptr = {0};
    c.entry = ENTRY_RECURSIVE;
    c.nparts = 2;
    c.ubfactor = 5;
    c.coarsento = 100;
    c.polish = false;
    const int plain[ZORPEL_NOPTIONS] = {
        1, 1, ZORPEL_CTYPE_EDGE, ZORPEL_RTYPE_FM, ZORPEL_VCYCLE_NO, 0, 0, 0, 0};
    for (int i = 0; i < ZORPEL_NOPTIONS; i++) c.options[i] = plain[i];
    return c;
}

void add_hedge(Case *c, const std::vector<int> &pins)
{
    const size_t begin = c->eind.size();
    for (const int v : pins) {
        bool listed = false;
        for (size_t j = begin; j < c->eind.size() && !listed; j++) listed = c->eind[j] == v;
        if (!listed) c->eind.push_back(v);
    }
    c->eptr.push_back(static_cast<int>(c->eind.size()));
}

bool is_fixed(const Case &c)
{
    const bool takes_options = c.entry == ENTRY_SHALLOW || c.options[ZORPEL_OPT_USE] != 0;
    return takes_options && c.entry != ENTRY_REFINE && c.entry != ENTRY_DIRECT &&
           c.options[ZORPEL_OPT_FIXED] == 1;
}

static void put_list(std::ostream &out, const char *name, const std::vector<int> &list)
{
    out << name << ' ' << list.size() << '\n';
    for (size_t i = 0; i < list.size(); i++)
        out << list[i] << (i % 20 == 19 || i + 1 == list.size() ? '\n' : ' ');
}

static void put_weights(std::ostream &out, const char *name, const std::vector<int> &weights)
{
    if (weights.empty())
        out << name << " null\n";
    else
        put_list(out, name, weights);
}

std::string to_text(const Case &c)
{
    std::ostringstream out;
    out << MAGIC << "\nfamily " << c.family << "\nentry " << c.entry << "\nnparts " << c.nparts
        << "\nubfactor " << c.ubfactor << "\ncoarsento " << c.coarsento << "\npolish " << c.polish
        << "\noptions";
    for (const int option : c.options) out << ' ' << option;
    out << "\nnvtxs " << c.nvtxs << "\nnhedges " << count_hedges(c) << '\n';
    for (int e = 0; e < count_hedges(c); e++) {
        out << hedge_size(c, e);
        for (int j = c.eptr[static_cast<size_t>(e)]; j < c.eptr[static_cast<size_t>(e) + 1]; j++)
            out << ' ' << c.eind[static_cast<size_t>(j)];
        out << '\n';
    }
    put_weights(out, "vwgts", c.vwgts);
    put_weights(out, "hewgts", c.hewgts);
    put_list(out, "part", c.part);
    return out.str();
}

static bool take_word(std::istream &in, const char *expected)
{
    std::string word;
    return in >> word && word == expected;
}

static bool take_number(std::istream &in, const char *name, int *number)
{
    return take_word(in, name) && in >> *number;
}

static bool take_list(std::istream &in, const char *name, std::vector<int> *list)
{
    std::string count;
    if (!take_word(in, name) || !(in >> count)) return false;
    list->clear();
    if (count == "null") return true;
    std::istringstream digits(count);
    size_t n = 0;
    if (!(digits >> n)) return false;
    for (int value; list->size() < n && in >> value;) list->push_back(value);
    return list->size() == n;
}

static bool take_hedges(std::istream &in, Case *c)
{
    int nhedges = 0;
    if (!take_number(in, "nvtxs", &c->nvtxs) || !take_number(in, "nhedges", &nhedges)) return false;
    for (int e = 0; e < nhedges; e++) {
        int size = 0;
        if (!(in >> size)) return false;
        std::vector<int> pins;
        for (int v; static_cast<int>(pins.size()) < size && in >> v;) {
            if (v < 0 || v >= c->nvtxs) return false;
            pins.push_back(v);
        }
        if (static_cast<int>(pins.size()) != size) return false;
        add_hedge(c, pins);
    }
    return true;
}

static bool sizes_agree(const Case &c)
{
    const size_t n = static_cast<size_t>(c.nvtxs), m = static_cast<size_t>(count_hedges(c));
    return (c.vwgts.empty() || c.vwgts.size() == n) && (c.hewgts.empty() || c.hewgts.size() == m) &&
           c.part.size() == n;
}

bool from_text(const std::string &text, Case *c)
{
    std::istringstream lines(text);
    std::string kept, line;
    while (std::getline(lines, line))
        if (line.empty() || line[0] != '#') kept += line + '\n';
    std::istringstream in(kept);
    *c = empty_case();
    int entry = 0, polish = 0;
    if (!take_word(in, MAGIC) || !take_word(in, "family") || !(in >> c->family)) return false;
    if (!take_number(in, "entry", &entry) || entry < 0 || entry >= NENTRIES) return false;
    if (!take_number(in, "nparts", &c->nparts) || !take_number(in, "ubfactor", &c->ubfactor) ||
        !take_number(in, "coarsento", &c->coarsento) || !take_number(in, "polish", &polish))
        return false;
    c->entry = static_cast<Entry>(entry);
    c->polish = polish != 0;
    if (!take_word(in, "options")) return false;
    for (int &option : c->options)
        if (!(in >> option)) return false;
    return take_hedges(in, c) && take_list(in, "vwgts", &c->vwgts) &&
           take_list(in, "hewgts", &c->hewgts) && take_list(in, "part", &c->part) &&
           sizes_agree(*c);
}

bool load_case(const std::string &name, Case *c)
{
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return file.good() && from_text(text.str(), c);
}

bool save_case(const std::string &name, const Case &c, const std::string &why)
{
    std::ofstream file(name);
    std::istringstream reasons(why);
    for (std::string line; std::getline(reasons, line);) file << "# " << line << '\n';
    file << to_text(c);
    return static_cast<bool>(file.flush());
}
