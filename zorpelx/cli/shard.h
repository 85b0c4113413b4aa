/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/shard.h: searches whose jobs are kept in a journal, and spread over shards. */
#ifndef ZORPELX_CLI_SHARD_H
#define ZORPELX_CLI_SHARD_H

#include "failure.h"
#include "options.h"

/* Whether the command line asks for a journal, or for what needs one. */
bool is_shared(const Settings &settings);

/* The partition command with --journal, and with --shard a part of it. */
Status run_shard(const Settings &settings);

/* Throws STATUS_USAGE where --journal and options of the engine alone, or of several searches, are
 * together. */
void check_sharing(const Settings &settings);

#endif
