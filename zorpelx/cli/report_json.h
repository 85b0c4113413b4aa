/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/report_json.h: a report as JSON: what the page shows, and all of the lists. */
#ifndef ZORPELX_CLI_REPORT_JSON_H
#define ZORPELX_CLI_REPORT_JSON_H

#include "account.h"
#include "json.h"

/* Adds everything but the beginning that all answers have. */
void add_report(const Account &account, Json *json);

#endif
