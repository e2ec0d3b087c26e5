/*
 * summary: prints what is in a measurement file, through the first interface.
 *
 *     summary FILE
 *
 * The tree, with every property; for each channel the number of its values, their type, and the
 * first and the last of them. `tdms info --stats FILE` prints more.
 */
#define _POSIX_C_SOURCE 200809L
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <tdms.h>
#include <unistd.h>

/* A row for each type of numbers: its name in constants and in functions, its type in C, and the
 * format for printf. X gets `argument` before the row. */
#define NUMBERS(X, argument)                          \
    X(argument, INT8, int8, int8_t, "%d")             \
    X(argument, INT16, int16, int16_t, "%d")          \
    X(argument, INT32, int32, int32_t, "%" PRId32)    \
    X(argument, INT64, int64, int64_t, "%" PRId64)    \
    X(argument, UINT8, uint8, uint8_t, "%d")          \
    X(argument, UINT16, uint16, uint16_t, "%d")       \
    X(argument, UINT32, uint32, uint32_t, "%" PRIu32) \
    X(argument, UINT64, uint64, uint64_t, "%" PRIu64) \
    X(argument, FLOAT, float, float, "%.7g")          \
    X(argument, DOUBLE, double, double, "%.15g")      \
    X(argument, BOOL, bool, bool, "%d")

/* The property functions for one kind of object: the file, a group or a channel. */
struct level {
    int (*count)(void*);
    int (*names)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*get_string)(void*, const char*, char*, uint64_t);
    int (*get_timestamp)(void*, const char*, timestamp_fields*);
#define GETTER(none, CODE, suffix, type, format) int (*get_##suffix)(void*, const char*, type*);
    NUMBERS(GETTER, )
};

#define GETTER_OF(object, CODE, suffix, type, format) get_##object##_property_##suffix,
#define LEVEL(object)                                                                           \
    {                                                                                           \
        get_num_##object##_property, get_##object##_property, get_##object##_property_datatype, \
            get_##object##_property_string, get_##object##_property_timestamp,                  \
            NUMBERS(GETTER_OF, object)                                                          \
    }
static const struct level FILE_LEVEL = LEVEL(file);
static const struct level GROUP_LEVEL = LEVEL(group);
static const struct level CHANNEL_LEVEL = LEVEL(channel);

static void* allocate(uint64_t count, size_t size)
{
    void* memory = count > SIZE_MAX / size ? NULL : calloc((size_t)count + 1, size);
    if (memory == NULL) {
        fputs("summary: out of memory\n", stderr);
        exit(1);
    }
    return memory;
}

static void print_time(const timestamp_fields* t)
{
    printf("%04d-%02d-%02d %02d:%02d:%02d.%06d", t->year, t->month, t->day, t->hour, t->minute,
           t->second, t->microsecond);
}

/* The buffer grows until the string fits. */
static void print_string(const struct level* level, void* handle, const char* name)
{
    uint64_t size = 64;
    char* buffer = allocate(size, 1);
    while (level->get_string(handle, name, buffer, size) == TDMS_PROPERTY_BUFFER) {
        free(buffer);
        size *= 2;
        buffer = allocate(size, 1);
    }
    printf("\"%s\"", buffer);
    free(buffer);
}

static void print_property(const struct level* level, void* handle, const char* name)
{
    timestamp_fields time;
    switch (level->datatype(handle, name)) {
#define PRINT_NUMBER(none, CODE, suffix, type, format) \
    case TDMS_TYPE_##CODE: {                           \
        type value;                                    \
        level->get_##suffix(handle, name, &value);     \
        printf(format, value);                         \
        break;                                         \
    }
        NUMBERS(PRINT_NUMBER, )
        case TDMS_TYPE_STRING:
            print_string(level, handle, name);
            break;
        case TDMS_TYPE_TIMESTAMP:
            level->get_timestamp(handle, name, &time);
            print_time(&time);
            break;
        default:
            fputs("(unsupported type)", stdout);
    }
}

static void print_properties(const struct level* level, void* handle, int indent)
{
    const int count = level->count(handle);
    const char** names = allocate((uint64_t)count, sizeof *names);
    int i;
    level->names(handle, names);
    for (i = 0; i != count; ++i) {
        printf("%*s%s = ", indent, "", names[i]);
        print_property(level, handle, names[i]);
        putchar('\n');
    }
    free(names);
}

/* Returns the status of reading the values, of which there is at least one. */
static int print_values(void* channel, int type, uint64_t count)
{
    int status = TDMS_CHANNEL_DATATYPE;
    const uint64_t last = count - 1;
    timestamp_fields* times;
    const char** strings;
    switch (type) {
#define PRINT_NUMBERS(none, CODE, suffix, type, format)                                  \
    case TDMS_TYPE_##CODE: {                                                             \
        type* values = allocate(count, sizeof *values);                                  \
        status = get_channel_data_##suffix(channel, values);                             \
        if (status == 0)                                                                 \
            printf(#suffix ", first " format ", last " format, values[0], values[last]); \
        free(values);                                                                    \
        break;                                                                           \
    }
        NUMBERS(PRINT_NUMBERS, )
        case TDMS_TYPE_STRING:
            strings = allocate(count, sizeof *strings);
            status = get_channel_data_string(channel, strings);
            if (status == 0) printf("string, first \"%s\", last \"%s\"", strings[0], strings[last]);
            free(strings);
            break;
        case TDMS_TYPE_TIMESTAMP:
            times = allocate(count, sizeof *times);
            status = get_channel_data_timestamp(channel, times);
            if (status == 0) {
                fputs("timestamp, first ", stdout);
                print_time(&times[0]);
                fputs(", last ", stdout);
                print_time(&times[last]);
            }
            free(times);
    }
    return status;
}

/* Prints a channel's values from a process of its own. Of all strings that a process reads through
 * this interface, it gets the first ones again, so each channel of strings needs its own process;
 * and a C++ exception about a damaged channel ends only that. */
static void print_values_apart(void* channel, int type, uint64_t count)
{
    pid_t child;
    int result = 0;
    fflush(stdout);
    child = fork();
    if (child == 0) {
        const int status = freopen("/dev/null", "w", stderr) == NULL
                               ? TDMS_CHANNEL_DATA_READ
                               : print_values(channel, type, count);
        if (status != 0) fputs(get_error_description(status), stdout);
        fflush(stdout);
        _exit(0);
    }
    if (child < 0 || waitpid(child, &result, 0) != child || !WIFEXITED(result)) {
        fputs("cannot be read", stdout);
    }
}

static void print_channel(void* channel)
{
    const char* name;
    uint64_t length;
    uint64_t count = 0;
    tdms_get_channel_name(channel, &name, &length);
    get_num_channel_data(channel, &count);
    printf("    channel %s: %" PRIu64 " values\n", name, count);
    print_properties(&CHANNEL_LEVEL, channel, 8);
    if (count == 0) return;
    printf("%8s", "");
    print_values_apart(channel, get_channel_datatype(channel), count);
    putchar('\n');
}

static void print_group(void* group)
{
    const int count = get_num_channel(group);
    void** channels = allocate((uint64_t)count, sizeof *channels);
    const char* name;
    uint64_t length;
    int i;
    tdms_get_group_name(group, &name, &length);
    printf("group %s\n", name);
    print_properties(&GROUP_LEVEL, group, 4);
    get_channel(group, channels);
    for (i = 0; i != count; ++i) print_channel(channels[i]);
    free(channels);
}

int main(int argc, char** argv)
{
    void* file;
    void** groups;
    int status;
    int i;
    if (argc != 2) {
        fputs("usage: summary FILE\n", stderr);
        return 2;
    }
    status = open_file(argv[1], "r", &file);
    if (status != 0) {
        fprintf(stderr, "summary: %s: %s\n", argv[1], get_error_description(status));
        return 1;
    }
    print_properties(&FILE_LEVEL, file, 0);
    groups = allocate((uint64_t)get_num_group(file), sizeof *groups);
    get_group(file, groups);
    for (i = 0; i != get_num_group(file); ++i) print_group(groups[i]);
    free(groups);
    close_file(&file);
    return 0;
}
