// SPDX-License-Identifier: MIT
/* zorpelx/lib/records.cpp: defaults and sizes of the records, version and names of the statuses. */
#include "records.h"

#include <cstddef>
#include <cstring>

const char *zorpelx_version(void)
{
    return ZORPELX_VERSION;
}

const char *zorpelx_status_string(int status)
{
    switch (status) {
    case ZORPELX_OK:
        return "success";
    case ZORPELX_FAILED:
        return "no start gave a partition";
    case ZORPELX_BAD_OPTION:
        return "bad option or argument";
    case ZORPELX_BAD_INPUT:
        return "bad input";
    case ZORPELX_SYSTEM:
        return "refused by the system";
    case ZORPELX_NO_MEMORY:
        return "out of memory";
    case ZORPELX_TIMEOUT:
        return "deadline reached";
    case ZORPELX_CANCELLED:
        return "cancelled";
    default:
        return "unknown status";
    }
}

/* Bytes of the records in the first version of the header, which ended with these fields. */
constexpr size_t FIRST_OPTIONS = offsetof(zorpelx_options, user) + sizeof(void *);
constexpr size_t FIRST_RESULT = offsetof(zorpelx_result, message) + ZORPELX_MESSAGE_SIZE;
constexpr size_t FIRST_QUALITY = offsetof(zorpelx_quality, imbalance) + sizeof(double);
constexpr size_t FIRST_STATS = offsetof(zorpelx_stats, degrees) + sizeof(zorpelx_spread);

template <class Record> static bool is_known(size_t size, size_t first)
{
    return size >= first && size <= sizeof(Record) && size % alignof(Record) == 0;
}

bool size_is_known(const zorpelx_result &result)
{
    return is_known<zorpelx_result>(result.size, FIRST_RESULT);
}

bool size_is_known(const zorpelx_quality &quality)
{
    return is_known<zorpelx_quality>(quality.size, FIRST_QUALITY);
}

bool size_is_known(const zorpelx_stats &stats)
{
    return is_known<zorpelx_stats>(stats.size, FIRST_STATS);
}

template <class Record> static void copy_known(const Record &known, Record *record, size_t size)
{
    memcpy(static_cast<void *>(record), &known, size);
    record->size = size;
}

void hand_back(const zorpelx_result &known, zorpelx_result *result)
{
    copy_known(known, result, result->size);
}

void hand_back(const zorpelx_quality &known, zorpelx_quality *quality)
{
    copy_known(known, quality, quality->size);
}

void hand_back(const zorpelx_stats &known, zorpelx_stats *stats)
{
    copy_known(known, stats, stats->size);
}

static zorpelx_options default_options()
{
    zorpelx_options options = {};
    options.size = sizeof options;
    options.nparts = 2;
    options.ubfactor = 5;
    options.nruns = 10;
    options.ctype = ZORPEL_CTYPE_HFC;
    options.rtype = ZORPEL_RTYPE_FM;
    options.vcycle = ZORPEL_VCYCLE_END;
    options.polish = 1;
    options.seed = 1;
    options.starts = 1;
    options.epsilon = options.least = -1;
    options.preset = ZORPELX_DEFAULT;
    return options;
}

Fault adopt_options(const zorpelx_options *given, zorpelx_options *known)
{
    if (given == nullptr) return fault(ZORPELX_BAD_OPTION, "The options are null.");
    if (!is_known<zorpelx_options>(given->size, FIRST_OPTIONS))
        return fault(ZORPELX_BAD_OPTION,
                     "The size of the options is %zu instead of %zu; set them by "
                     "zorpelx_options_init().",
                     given->size, sizeof *known);
    *known = default_options();
    memcpy(static_cast<void *>(known), given, given->size);
    known->size = sizeof *known;
    return {};
}

/* Sets a record to its defaults as far as the caller's header knows it. */
template <class Record>
static int init_record(Record *record, size_t size, size_t first, const Record &defaults)
{
    if (record == nullptr || !is_known<Record>(size, first)) return ZORPELX_BAD_OPTION;
    copy_known(defaults, record, size);
    return ZORPELX_OK;
}

int zorpelx_options_init(zorpelx_options *options, size_t size)
{
    return init_record(options, size, FIRST_OPTIONS, default_options());
}

int zorpelx_result_init(zorpelx_result *result, size_t size)
{
    return init_record(result, size, FIRST_RESULT, zorpelx_result());
}

int zorpelx_quality_init(zorpelx_quality *quality, size_t size)
{
    return init_record(quality, size, FIRST_QUALITY, zorpelx_quality());
}

int zorpelx_stats_init(zorpelx_stats *stats, size_t size)
{
    return init_record(stats, size, FIRST_STATS, zorpelx_stats());
}
