/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/worker.h: the engine at work in a child process. */
#ifndef ZORPELX_LIB_WORKER_H
#define ZORPELX_LIB_WORKER_H

#include <cstddef>
#include <semaphore.h>
#include <sys/types.h>

#include "fault.h"
#include "trace_progress.h"
#include "searching.h"

/* Memory shared with child processes, all 0 at first. */
class SharedMemory
{
  public:
    explicit SharedMemory(size_t size); // throws std::bad_alloc
    ~SharedMemory();
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    void *data() const { return start; }

  private:
    void *start;
    size_t size;
};

/* The bell that children ring when they are done. */
class Bell
{
  public:
    Bell();
    ~Bell();
    void ring();
    void wait(double seconds); // until it rings or the time is over

  private:
    SharedMemory memory;
    sem_t *semaphore;
};

/* A file in memory, without a name. */
class Scratch
{
  public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    int fd() const { return descriptor; } // negative: the system gave none
    size_t size() const;
    bool clear(); // false: the system refused, see errno
    void close_now();

  private:
    int descriptor;
};

/* What a start is to do. */
struct Task {
    const zorpelx_hypergraph *hypergraph; // checked, and without small hyperedges
    const zorpelx_options *options;       // checked
    const std::vector<Limits> *limits;    // [nparts] of the parts' weights
    int threads;                          // of the child, at least 1
    size_t memory;                        // most bytes that the child may add; SIZE_MAX: no cap
    int start;                            // from 0
    int seed;
};

/* A place where one start after the other can be at work. The child is killed and reaped before
 * the place goes away. */
class Worker
{
  public:
    enum class State {
        Idle,   // no child
        Busy,   // the child is at work
        Done,   // it is gone and left a partition
        Failed, // it is gone and left none
    };

    Worker(Bell &ring, int nvtxs, bool search);
    ~Worker();

    /* Starts a child; needs Idle. Gives a fault if there can be none: then nothing happened. */
    Fault start(const Task &what);
    /* Looks at the child of a busy worker: whether it has rung, which costs nothing, or also
     * whether it died in silence. */
    void poll(bool for_deaths);
    /* Ends the child, if any, and makes the worker idle. */
    void stop();
    /* Ends the child of a busy worker: Done if it has published a partition, else Idle. */
    void harvest();

    State state() const { return now; }
    const Task &task() const { return work; }
    const int *part() const; // [nvtxs], if Done
    const Board &shown() const { return *board; }
    Fault failure() const { return why; } // if Failed
    void scan(Counts *counts);            // brings the counts up to the trace written so far
    void deliver_trace();                 // to the caller's on_trace
    /* Ends the child and closes the files, by nothing that a signal handler may not call. */
    void abandon();

    /* Bytes that a worker holds in the caller's process. */
    static size_t footprint(int nvtxs, bool search)
    {
        return sizeof(Board) + static_cast<size_t>(nvtxs) * (search ? 2 : 1) * sizeof(int);
    }

  private:
    [[noreturn]] void run_child(pid_t parent, int channel);
    void reap(int wait_status, bool known);
    void end_child();
    void drop_trace();

    Bell &bell;
    SharedMemory memory; // the board and one partition, or two of a search
    Board *board;
    int *parts;
    Scratch out, err;
    void *trace = nullptr; // mapped while the caller looks at it
    size_t trace_size = 0;
    TraceScanner scanner;
    State now = State::Idle;
    Task work = {};
    pid_t pid = -1;
    Fault why;
};

#endif
