/*
 * record: samples this machine's own counters into a measurement file.
 *
 *     record [FILE [SECONDS [RATE]]]        defaults: record.tdms, 5 seconds, 50 samples a second
 *
 * One group holds the samples: their times, the CPU's share in each state since the previous
 * sample, the memory in use and the load average; and a channel of events. The samples are saved
 * every second, so a recording that is killed loses at most the last second, and other programs can
 * follow it. If the disk is full, they are saved as soon as there is room.
 */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tdms.h>
#include <time.h>

enum { CPU_STATES = 4, CHANNELS = CPU_STATES + 3, HIGHEST_RATE = 10000 };

static const struct {
    const char* name;
    const char* unit;
} CHANNEL[CHANNELS] = {
    {"cpu user", "%"},      {"cpu system", "%"},         {"cpu idle", "%"},     {"cpu iowait", "%"},
    {"memory used", "MiB"}, {"memory available", "MiB"}, {"load", "processes"},
};

/* Prints the message of a status, and the system's reason if there is one. */
static void report(int status, const char* what)
{
    const int reason = errno;
    fprintf(stderr, "record: %s: %s", what, tdms_status_text(status));
    if (status == TDMS_FILE_PATH && reason == EWOULDBLOCK) {
        fputs(" Another program is writing to it.", stderr);
    } else if (status == TDMS_FILE_PATH || status == TDMS_WRITE) {
        fprintf(stderr, " %s.", strerror(reason));
    }
    fputc('\n', stderr);
}

static void check(int status, const char* what)
{
    if (status == 0) return;
    report(status, what);
    exit(1);
}

/* The CPU's ticks since boot: user and nice, system and interrupts, idle, waiting for disks.
 * Returns 0 if they cannot be read. */
static int read_cpu(double ticks[CPU_STATES])
{
    double user, nice, system, idle, iowait, irq, softirq;
    FILE* f = fopen("/proc/stat", "r");
    if (f == NULL) return 0;
    const int fields = fscanf(f, "cpu %lf %lf %lf %lf %lf %lf %lf", &user, &nice, &system, &idle,
                              &iowait, &irq, &softirq);
    fclose(f);
    if (fields != 7) return 0;
    ticks[0] = user + nice;
    ticks[1] = system + irq + softirq;
    ticks[2] = idle;
    ticks[3] = iowait;
    return 1;
}

static int read_memory(double* used, double* available)
{
    char line[128];
    double total_kib = -1;
    double available_kib = -1;
    FILE* f = fopen("/proc/meminfo", "r");
    if (f == NULL) return 0;
    while (fgets(line, sizeof line, f) != NULL) {
        sscanf(line, "MemTotal: %lf", &total_kib);
        sscanf(line, "MemAvailable: %lf", &available_kib);
    }
    fclose(f);
    if (total_kib < 0 || available_kib < 0) return 0;
    *used = (total_kib - available_kib) / 1024;
    *available = available_kib / 1024;
    return 1;
}

static int read_load(double* load)
{
    FILE* f = fopen("/proc/loadavg", "r");
    if (f == NULL) return 0;
    const int fields = fscanf(f, "%lf", load);
    fclose(f);
    return fields == 1;
}

/* Takes one sample of every channel; a value that cannot be read is NaN. `before` holds the CPU's
 * ticks at the previous sample, and gets those of this one. */
static void sample(double values[CHANNELS], double before[CPU_STATES])
{
    double now[CPU_STATES];
    double total = 0;
    int i;
    for (i = 0; i != CHANNELS; ++i) values[i] = NAN;
    if (read_cpu(now)) {
        for (i = 0; i != CPU_STATES; ++i) total += now[i] - before[i];
        for (i = 0; i != CPU_STATES; ++i) {
            /* A tick takes 10 ms: between two fast samples there may be none. */
            values[i] = total > 0 ? 100 * (now[i] - before[i]) / total : 0;
            before[i] = now[i];
        }
    }
    read_memory(&values[CPU_STATES], &values[CPU_STATES + 1]);
    read_load(&values[CPU_STATES + 2]);
}

static int64_t now(void)
{
    struct timespec t;
    clock_gettime(CLOCK_REALTIME, &t);
    return (int64_t)t.tv_sec * 1000000000 + t.tv_nsec;
}

struct recording {
    const char* path;
    void* file;
    void* group;
    void* time;
    void* events;
    void* channels[CHANNELS];
};

static void create(struct recording* r, double rate)
{
    int i;
    check(tdms_open(r->path, "w", &r->file), r->path);
    check(create_file_property_string(r->file, "title", "Counters of this machine"), "title");
    check(tdms_create_file_property_nanoseconds(r->file, "start", now()), "start");
    check(tdms_create_group(r->file, "system", &r->group), "group");
    check(create_group_property_double(r->group, "sampling rate", rate), "sampling rate");
    check(tdms_create_channel(r->group, "time", &r->time), "time");
    for (i = 0; i != CHANNELS; ++i) {
        void** channel = &r->channels[i];
        check(tdms_create_channel(r->group, CHANNEL[i].name, channel), CHANNEL[i].name);
        check(create_channel_property_string(*channel, "unit", CHANNEL[i].unit), "unit");
        check(create_channel_property_double(*channel, "sampling rate", rate), "sampling rate");
    }
    check(tdms_create_channel(r->group, "events", &r->events), "events");
}

/* Appends the events of a batch: its number, and whether the CPU was busy. */
static void append_events(struct recording* r, unsigned batch, unsigned samples, double idle)
{
    char number[64];
    const char* events[2] = {number, "cpu busy"};
    snprintf(number, sizeof number, "batch %u: %u samples", batch, samples);
    check(tdms_append_string(r->events, idle / samples < 50 ? 2 : 1, events), "events");
}

/* If the system cannot write, the samples stay in memory for the next save. */
static int save(struct recording* r)
{
    const int status = tdms_save(r->file);
    if (status == TDMS_WRITE) {
        report(status, r->path);
    } else {
        check(status, r->path);
    }
    return status;
}

/* Returns the status of the last save. */
static int record(struct recording* r, double seconds, double rate)
{
    const uint64_t total = (uint64_t)(seconds * rate + 0.5);
    const unsigned per_batch = rate < 1 ? 1 : (unsigned)rate;
    const long period = (long)(1e9 / rate);
    double values[CHANNELS];
    double ticks[CPU_STATES] = {0, 0, 0, 0};
    double idle = 0;
    struct timespec next;
    uint64_t done = 0;
    unsigned in_batch = 0;
    unsigned batch = 0;
    int status = 0;
    int i;

    read_cpu(ticks);
    clock_gettime(CLOCK_MONOTONIC, &next);
    while (done != total) {
        int64_t time;
        next.tv_nsec += period % 1000000000;
        next.tv_sec += period / 1000000000 + next.tv_nsec / 1000000000;
        next.tv_nsec %= 1000000000;
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, NULL) != 0) {
        }

        time = now();
        sample(values, ticks);
        check(tdms_append_nanoseconds(r->time, 1, &time), "time");
        for (i = 0; i != CHANNELS; ++i) {
            check(tdms_append_double(r->channels[i], 1, &values[i]), CHANNEL[i].name);
        }
        idle += values[2];
        ++done;
        if (++in_batch != per_batch && done != total) continue;

        append_events(r, ++batch, in_batch, idle);
        status = save(r);
        in_batch = 0;
        idle = 0;
    }
    return status;
}

int main(int argc, char** argv)
{
    const double seconds = argc > 2 ? atof(argv[2]) : 5;
    const double rate = argc > 3 ? atof(argv[3]) : 50;
    struct recording r = {argc > 1 ? argv[1] : "record.tdms", NULL, NULL, NULL, NULL, {NULL}};
    int status;
    if (argc > 4 || r.path[0] == '-' || !(seconds > 0) || !(rate > 0) || !(rate <= HIGHEST_RATE)) {
        fprintf(stderr, "usage: record [FILE [SECONDS [RATE]]], RATE at most %d a second\n",
                HIGHEST_RATE);
        return 2;
    }
    create(&r, rate);
    status = record(&r, seconds, rate);
    check(tdms_close(&r.file), r.path);
    return status == 0 ? 0 : 1;
}
