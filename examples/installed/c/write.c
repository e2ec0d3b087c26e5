/*
 * write: makes a measurement file of one group with a sine and its times.
 *
 *     cc write.c -o write $(pkg-config --cflags --libs tdms) -lm
 *     ./write sine.tdms
 */
#include <math.h>
#include <stdio.h>
#include <tdms.h>

enum { SAMPLES = 200, STEP = 5000 }; /* a sample every 5 ms */

static void check(int status)
{
    if (status < 0) fprintf(stderr, "write: %s\n", get_error_description(status));
}

int main(int argc, char** argv)
{
    static double volts[SAMPLES];
    static timestamp_fields times[SAMPLES];
    void* file;
    void* group;
    void* voltage;
    void* time;
    int status;
    int i;
    if (argc != 2) {
        fputs("usage: write FILE\n", stderr);
        return 2;
    }
    status = open_file(argv[1], "w", &file);
    check(status);
    if (status < 0) return 1;
    for (i = 0; i != SAMPLES; ++i) {
        const timestamp_fields t = {2024, 5, 17, 12, 0, i * STEP / 1000000, i * STEP % 1000000};
        times[i] = t;
        volts[i] = 5 + sin(i * 0.1);
    }
    check(create_file_property_string(file, "title", "a sine"));
    check(create_group(file, "bench", &group));
    check(create_channel(group, "time", &time));
    check(set_channel_data_timestamp(time, SAMPLES, times));
    check(create_channel(group, "voltage", &voltage));
    check(create_channel_property_string(voltage, "unit", "V"));
    check(set_channel_data_double(voltage, SAMPLES, volts));
    check(save_file(file));
    check(close_file(&file));
    return 0;
}
