/*
 * write: makes a measurement file of one group with a sine and its times.
 *
 *     cc write.c -o write $(pkg-config --cflags --libs tdms) -lm
 *     ./write sine.tdms
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <tdms.h>

enum { SAMPLES = 200 };

static void check(int status)
{
    if (status == 0) return;
    fprintf(stderr, "write: %s\n", tdms_status_text(status));
    exit(1);
}

int main(int argc, char** argv)
{
    void* file;
    void* group;
    void* voltage;
    void* time;
    int i;
    if (argc != 2) {
        fputs("usage: write FILE\n", stderr);
        return 2;
    }
    check(tdms_open(argv[1], "w", &file));
    check(create_file_property_string(file, "title", "a sine"));
    check(tdms_create_group(file, "bench", &group));
    check(tdms_create_channel(group, "time", &time));
    check(tdms_create_channel(group, "voltage", &voltage));
    check(create_channel_property_string(voltage, "unit", "V"));
    for (i = 0; i != SAMPLES; ++i) {
        /* Every 5 ms from 2024-05-17T12:00:00 UTC on, in nanoseconds. */
        const int64_t moment = 1715947200000000000 + i * (int64_t)5000000;
        const double volts = 5 + sin(i * 0.1);
        check(tdms_append_nanoseconds(time, 1, &moment));
        check(tdms_append_double(voltage, 1, &volts));
    }
    check(tdms_save(file));
    check(tdms_close(&file));
    return 0;
}
