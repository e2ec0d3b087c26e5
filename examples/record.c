/*
 * record: samples this machine's own counters into a measurement file.
 *
 *     record [FILE [SECONDS [RATE]]]        defaults: record.tdms, 5 seconds, 50 samples a second
 *
 * One group holds the samples: the time of each, the CPU's share in each state since the sample
 * before, the memory in use and the load average; and a channel of events. A save follows each
 * batch of a second, as a program would do that runs all day.
 */
#define _POSIX_C_SOURCE 200809L
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tdms.h>
#include <time.h>

enum { CPU_STATES = 4, CHANNELS = CPU_STATES + 3, MOST_PER_BATCH = 10000 };

static const struct {
    const char* name;
    const char* unit;
} CHANNEL[CHANNELS] = {
    {"cpu user", "%"},      {"cpu system", "%"},         {"cpu idle", "%"},     {"cpu iowait", "%"},
    {"memory used", "MiB"}, {"memory available", "MiB"}, {"load", "processes"},
};

static void check(int status, const char* what)
{
    if (status >= 0) return;
    fprintf(stderr, "record: %s: %s\n", what, get_error_description(status));
    exit(1);
}

/* The CPU's ticks since boot: user and nice, system and interrupts, idle, waiting for disks. */
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

/* One sample of every channel; what cannot be read is not a number. `before` are the CPU's ticks at
 * the sample before. */
static void sample(double values[CHANNELS], double before[CPU_STATES])
{
    double now[CPU_STATES];
    double total = 0;
    int i;
    for (i = 0; i != CHANNELS; ++i) values[i] = NAN;
    if (read_cpu(now)) {
        for (i = 0; i != CPU_STATES; ++i) total += now[i] - before[i];
        for (i = 0; i != CPU_STATES; ++i) {
            /* Ticks are 10 ms: between two fast samples there may be none. */
            values[i] = total > 0 ? 100 * (now[i] - before[i]) / total : 0;
            before[i] = now[i];
        }
    }
    read_memory(&values[CPU_STATES], &values[CPU_STATES + 1]);
    read_load(&values[CPU_STATES + 2]);
}

static timestamp_fields calendar(const struct timespec* t)
{
    struct tm local;
    timestamp_fields fields;
    localtime_r(&t->tv_sec, &local);
    fields.year = local.tm_year + 1900;
    fields.month = local.tm_mon + 1;
    fields.day = local.tm_mday;
    /* The library takes the fields as standard time. */
    fields.hour = local.tm_hour - (local.tm_isdst > 0);
    fields.minute = local.tm_min;
    fields.second = local.tm_sec;
    fields.microsecond = (int32_t)(t->tv_nsec / 1000);
    return fields;
}

struct recording {
    void* file;
    void* group;
    void* time;
    void* events;
    void* channels[CHANNELS];
};

static void create(struct recording* r, const char* path, double rate, timestamp_fields start)
{
    int i;
    check(open_file(path, "w", &r->file), path);
    check(create_file_property_string(r->file, "title", "Counters of this machine"), "title");
    check(create_file_property_timestamp(r->file, "start", start), "start");
    check(create_group(r->file, "system", &r->group), "group");
    check(create_group_property_double(r->group, "sampling rate", rate), "sampling rate");
    check(create_channel(r->group, "time", &r->time), "time");
    for (i = 0; i != CHANNELS; ++i) {
        void** channel = &r->channels[i];
        check(create_channel(r->group, CHANNEL[i].name, channel), CHANNEL[i].name);
        check(create_channel_property_string(*channel, "unit", CHANNEL[i].unit), "unit");
        check(create_channel_property_double(*channel, "sampling rate", rate), "sampling rate");
    }
    check(create_channel(r->group, "events", &r->events), "events");
}

/* What a batch has to tell: its number, and whether the CPU was busy. */
static void stage_events(struct recording* r, unsigned batch, const double* idle, uint64_t count)
{
    char number[64];
    const char* events[2] = {number, "cpu busy"};
    double sum = 0;
    uint64_t i;
    for (i = 0; i != count; ++i) sum += idle[i];
    snprintf(number, sizeof number, "batch %u: %u samples", batch, (unsigned)count);
    check(set_channel_data_string(r->events, sum / (double)count < 50 ? 2 : 1, events), "events");
}

static void record(struct recording* r, double seconds, double rate)
{
    static timestamp_fields times[MOST_PER_BATCH];
    static double columns[CHANNELS][MOST_PER_BATCH];
    const uint64_t total = (uint64_t)(seconds * rate + 0.5);
    const uint64_t per_batch = rate < 1 ? 1 : (uint64_t)rate;
    double values[CHANNELS];
    double ticks[CPU_STATES] = {0, 0, 0, 0};
    struct timespec next;
    struct timespec now;
    uint64_t done = 0;
    uint64_t in_batch = 0;
    unsigned batch = 0;
    int i;

    read_cpu(ticks);
    clock_gettime(CLOCK_MONOTONIC, &next);
    while (done != total) {
        const long period = (long)(1e9 / rate);
        next.tv_nsec += period % 1000000000;
        next.tv_sec += period / 1000000000 + next.tv_nsec / 1000000000;
        next.tv_nsec %= 1000000000;
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, NULL) != 0) {
        }

        clock_gettime(CLOCK_REALTIME, &now);
        times[in_batch] = calendar(&now);
        sample(values, ticks);
        for (i = 0; i != CHANNELS; ++i) columns[i][in_batch] = values[i];
        ++done;
        if (++in_batch != per_batch && done != total) continue;

        check(set_channel_data_timestamp(r->time, in_batch, times), "time");
        for (i = 0; i != CHANNELS; ++i) {
            check(set_channel_data_double(r->channels[i], in_batch, columns[i]), CHANNEL[i].name);
        }
        stage_events(r, ++batch, columns[2], in_batch);
        check(save_file(r->file), "save");
        in_batch = 0;
    }
}

int main(int argc, char** argv)
{
    const char* path = argc > 1 ? argv[1] : "record.tdms";
    const double seconds = argc > 2 ? atof(argv[2]) : 5;
    const double rate = argc > 3 ? atof(argv[3]) : 50;
    struct recording r;
    struct timespec now;
    if (argc > 4 || !(seconds > 0) || !(rate > 0) || !(rate <= MOST_PER_BATCH)) {
        fprintf(stderr, "usage: record [FILE [SECONDS [RATE]]], RATE at most %d a second\n",
                MOST_PER_BATCH);
        return 2;
    }
    clock_gettime(CLOCK_REALTIME, &now);
    create(&r, path, rate, calendar(&now));
    record(&r, seconds, rate);
    check(close_file(&r.file), "close");
    return 0;
}
