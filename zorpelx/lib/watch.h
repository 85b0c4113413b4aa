/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/watch.h: the deadline, the cancel flag and the memory cap of one call, heeded
 * wherever the caller's own process works for it. */
#ifndef ZORPELX_LIB_WATCH_H
#define ZORPELX_LIB_WATCH_H

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "fault.h"

/* What a call may still take, of time and of memory. One without options allows everything.
 *   W1  charged is the sum of the charges held; without a cap nothing is counted
 *   W2  at least every PATIENCE steps the clock and the cancel flag are looked at
 */
class Watch
{
  public:
    Watch() = default;
    /* The clock starts; the options, checked or not, must stay. */
    explicit Watch(const zorpelx_options &options) : o(&options) {}
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    double seconds() const; // since the clock started
    double left() const;    // until the deadline; large without one

    /* One step of any loop over the caller's arrays. */
    void step()
    {
        if (--until_look == 0) look();
    }
    /* Throws Stopped if the deadline has passed or the call is cancelled. */
    void look();

    /* From here on nothing stops the call: what there is is counted and handed over. */
    void close() { closing = true; }

    void cancel() { told_to_stop = true; } // as the cancel flag does
    void note_end(bool with_partition) { (with_partition ? finished : failed)++; }
    int nfinished() const { return finished; }
    int nfailed() const { return failed; }

    /* What the cap leaves for more; SIZE_MAX without one. */
    size_t room() const;
    /* Counts bytes to be held in the caller's process; throws Stopped if they pass the cap. */
    void charge(size_t bytes, const char *purpose);
    void discharge(size_t bytes) { charged -= capped() ? bytes : 0; }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr int PATIENCE = 1 << 16; // steps, less than a millisecond

    bool capped() const { return o != nullptr && o->memory > 0; }
    bool cancelled() const;
    Fault stop_reason() const;

    const zorpelx_options *const o = nullptr;
    const Clock::time_point began = Clock::now();
    int until_look = PATIENCE;
    bool told_to_stop = false;
    bool closing = false;
    int finished = 0, failed = 0; // starts
    size_t charged = 0;           // bytes
};

/* Memory charged for as long as this lives. */
class Charge
{
  public:
    Charge(Watch &paying, size_t size, const char *purpose) : watch(paying), bytes(size)
    {
        watch.charge(bytes, purpose);
    }
    ~Charge() { watch.discharge(bytes); }
    Charge(const Charge &) = delete;
    Charge &operator=(const Charge &) = delete;

  private:
    Watch &watch;
    const size_t bytes;
};

#endif
