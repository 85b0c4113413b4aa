/* zorpelx/lib/records.cpp: defaults of the records, version and names of the statuses. */
#include <cstring>

#include "zorpelx.h"

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

/* Clears a record of the size that this library knows and notes the size in it. */
template <class Record> static int init_record(Record *record, size_t size)
{
    if (record == nullptr || size != sizeof *record) return ZORPELX_BAD_OPTION;
    *record = Record();
    record->size = size;
    return ZORPELX_OK;
}

int zorpelx_options_init(zorpelx_options *options, size_t size)
{
    if (init_record(options, size) != ZORPELX_OK) return ZORPELX_BAD_OPTION;
    options->nparts = 2;
    options->ubfactor = 5;
    options->nruns = 10;
    options->ctype = ZORPEL_CTYPE_HFC;
    options->rtype = ZORPEL_RTYPE_FM;
    options->vcycle = ZORPEL_VCYCLE_END;
    options->polish = 1;
    options->seed = 1;
    options->starts = 1;
    return ZORPELX_OK;
}

int zorpelx_result_init(zorpelx_result *result, size_t size)
{
    return init_record(result, size);
}

int zorpelx_quality_init(zorpelx_quality *quality, size_t size)
{
    return init_record(quality, size);
}
