/*
 * summary: prints what is in a measurement file.
 *
 *     summary FILE
 *
 * The whole tree, with every property; for each channel its type and number of values, and the
 * first, last, smallest, largest and mean of them as far as the type has such.
 */
#define _POSIX_C_SOURCE 200809L
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tdms.h>
#include <unistd.h>

static void* allocate(uint64_t count, size_t size)
{
    void* memory =
        count > SIZE_MAX / size ? NULL : malloc(count == 0 ? size : (size_t)count * size);
    if (memory == NULL) {
        fputs("summary: out of memory\n", stderr);
        exit(1);
    }
    return memory;
}

static uint64_t file_size;

static const char* type_name(int type)
{
    switch (type) {
        case TDMS_TYPE_VOID:
            return "no type";
        case TDMS_TYPE_INT8:
            return "int8";
        case TDMS_TYPE_INT16:
            return "int16";
        case TDMS_TYPE_INT32:
            return "int32";
        case TDMS_TYPE_INT64:
            return "int64";
        case TDMS_TYPE_UINT8:
            return "uint8";
        case TDMS_TYPE_UINT16:
            return "uint16";
        case TDMS_TYPE_UINT32:
            return "uint32";
        case TDMS_TYPE_UINT64:
            return "uint64";
        case TDMS_TYPE_FLOAT:
            return "float";
        case TDMS_TYPE_DOUBLE:
            return "double";
        case TDMS_TYPE_STRING:
            return "string";
        case TDMS_TYPE_BOOL:
            return "bool";
        case TDMS_TYPE_TIMESTAMP:
            return "timestamp";
        default:
            return "unsupported type";
    }
}

/* No size is asked for: a name is at most as long as the file. */
static void print_name(const char* what, void* handle, int (*get_name)(void*, char*))
{
    char* name = allocate((file_size < UINT32_MAX ? file_size : UINT32_MAX) + 1, 1);
    get_name(handle, name);
    printf("%s%s", what, name);
    free(name);
}

static void print_time(const timestamp_fields* t)
{
    printf("%04d-%02d-%02d %02d:%02d:%02d.%06d", t->year, t->month, t->day, t->hour, t->minute,
           t->second, t->microsecond);
}

/* The property functions of one level of the tree. */
struct level {
    int (*count)(void*);
    int (*names)(void*, const char**);
    int (*datatype)(void*, const char*);
    int (*get_int8)(void*, const char*, int8_t*);
    int (*get_int16)(void*, const char*, int16_t*);
    int (*get_int32)(void*, const char*, int32_t*);
    int (*get_int64)(void*, const char*, int64_t*);
    int (*get_uint8)(void*, const char*, uint8_t*);
    int (*get_uint16)(void*, const char*, uint16_t*);
    int (*get_uint32)(void*, const char*, uint32_t*);
    int (*get_uint64)(void*, const char*, uint64_t*);
    int (*get_float)(void*, const char*, float*);
    int (*get_double)(void*, const char*, double*);
    int (*get_string)(void*, const char*, char*, uint64_t);
    int (*get_bool)(void*, const char*, bool*);
    int (*get_timestamp)(void*, const char*, timestamp_fields*);
};

#define LEVEL(name)                                                                               \
    {                                                                                             \
        get_num_##name##_property, get_##name##_property, get_##name##_property_datatype,         \
            get_##name##_property_int8, get_##name##_property_int16, get_##name##_property_int32, \
            get_##name##_property_int64, get_##name##_property_uint8,                             \
            get_##name##_property_uint16, get_##name##_property_uint32,                           \
            get_##name##_property_uint64, get_##name##_property_float,                            \
            get_##name##_property_double, get_##name##_property_string,                           \
            get_##name##_property_bool, get_##name##_property_timestamp                           \
    }
static const struct level FILE_LEVEL = LEVEL(file);
static const struct level GROUP_LEVEL = LEVEL(group);
static const struct level CHANNEL_LEVEL = LEVEL(channel);

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

#define PRINT_PROPERTY(type, suffix, format, cast) \
    {                                              \
        type value;                                \
        level->get_##suffix(handle, name, &value); \
        printf(format, (cast)value);               \
        break;                                     \
    }

static void print_property(const struct level* level, void* handle, const char* name)
{
    const int type = level->datatype(handle, name);
    switch (type) {
        case TDMS_TYPE_INT8:
            PRINT_PROPERTY(int8_t, int8, "%d", int)
        case TDMS_TYPE_INT16:
            PRINT_PROPERTY(int16_t, int16, "%d", int)
        case TDMS_TYPE_INT32:
            PRINT_PROPERTY(int32_t, int32, "%d", int)
        case TDMS_TYPE_INT64:
            PRINT_PROPERTY(int64_t, int64, "%" PRId64, int64_t)
        case TDMS_TYPE_UINT8:
            PRINT_PROPERTY(uint8_t, uint8, "%u", unsigned)
        case TDMS_TYPE_UINT16:
            PRINT_PROPERTY(uint16_t, uint16, "%u", unsigned)
        case TDMS_TYPE_UINT32:
            PRINT_PROPERTY(uint32_t, uint32, "%u", unsigned)
        case TDMS_TYPE_UINT64:
            PRINT_PROPERTY(uint64_t, uint64, "%" PRIu64, uint64_t)
        case TDMS_TYPE_FLOAT:
            PRINT_PROPERTY(float, float, "%.9g", double)
        case TDMS_TYPE_DOUBLE:
            PRINT_PROPERTY(double, double, "%.17g", double)
        case TDMS_TYPE_BOOL:
            PRINT_PROPERTY(bool, bool, "%d", int)
        case TDMS_TYPE_STRING:
            print_string(level, handle, name);
            break;
        case TDMS_TYPE_TIMESTAMP: {
            timestamp_fields value;
            level->get_timestamp(handle, name, &value);
            print_time(&value);
            break;
        }
        default:
            printf("(%s)", type_name(type));
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

/* Widens an array of numbers to doubles, which is exact up to 2^53. */
#define READ_NUMBERS(type, suffix)                                                  \
    {                                                                               \
        type* values = allocate(count, sizeof *values);                             \
        status = get_channel_data_##suffix(channel, values);                        \
        for (i = 0; status == 0 && i != count; ++i) numbers[i] = (double)values[i]; \
        free(values);                                                               \
        break;                                                                      \
    }

static int read_numbers(void* channel, int type, uint64_t count, double* numbers)
{
    int status = TDMS_CHANNEL_DATATYPE;
    uint64_t i;
    switch (type) {
        case TDMS_TYPE_INT8:
            READ_NUMBERS(int8_t, int8)
        case TDMS_TYPE_INT16:
            READ_NUMBERS(int16_t, int16)
        case TDMS_TYPE_INT32:
            READ_NUMBERS(int32_t, int32)
        case TDMS_TYPE_INT64:
            READ_NUMBERS(int64_t, int64)
        case TDMS_TYPE_UINT8:
            READ_NUMBERS(uint8_t, uint8)
        case TDMS_TYPE_UINT16:
            READ_NUMBERS(uint16_t, uint16)
        case TDMS_TYPE_UINT32:
            READ_NUMBERS(uint32_t, uint32)
        case TDMS_TYPE_UINT64:
            READ_NUMBERS(uint64_t, uint64)
        case TDMS_TYPE_FLOAT:
            READ_NUMBERS(float, float)
        case TDMS_TYPE_DOUBLE:
            READ_NUMBERS(double, double)
        case TDMS_TYPE_BOOL:
            READ_NUMBERS(bool, bool)
        default:
            break;
    }
    return status;
}

static int print_numbers(void* channel, int type, uint64_t count)
{
    double* numbers = allocate(count, sizeof *numbers);
    const int status = read_numbers(channel, type, count, numbers);
    if (status == 0) {
        double smallest = numbers[0];
        double largest = numbers[0];
        double sum = 0;
        uint64_t i;
        for (i = 0; i != count; ++i) {
            if (numbers[i] < smallest) smallest = numbers[i];
            if (numbers[i] > largest) largest = numbers[i];
            sum += numbers[i];
        }
        printf("first %.10g, last %.10g, minimum %.10g, maximum %.10g, mean %.10g", numbers[0],
               numbers[count - 1], smallest, largest, sum / (double)count);
    }
    free(numbers);
    return status;
}

static int compare_times(const timestamp_fields* a, const timestamp_fields* b)
{
    const int32_t left[] = {a->year,   a->month,  a->day,        a->hour,
                            a->minute, a->second, a->microsecond};
    const int32_t right[] = {b->year,   b->month,  b->day,        b->hour,
                             b->minute, b->second, b->microsecond};
    size_t i;
    for (i = 0; i != sizeof left / sizeof *left; ++i) {
        if (left[i] != right[i]) return left[i] < right[i] ? -1 : 1;
    }
    return 0;
}

static int print_times(void* channel, uint64_t count)
{
    timestamp_fields* times = allocate(count, sizeof *times);
    const int status = get_channel_data_timestamp(channel, times);
    if (status == 0) {
        uint64_t smallest = 0;
        uint64_t largest = 0;
        uint64_t i;
        for (i = 1; i != count; ++i) {
            if (compare_times(&times[i], &times[smallest]) < 0) smallest = i;
            if (compare_times(&times[i], &times[largest]) > 0) largest = i;
        }
        fputs("first ", stdout);
        print_time(&times[0]);
        fputs(", last ", stdout);
        print_time(&times[count - 1]);
        fputs(", minimum ", stdout);
        print_time(&times[smallest]);
        fputs(", maximum ", stdout);
        print_time(&times[largest]);
    }
    free(times);
    return status;
}

static int print_texts(void* channel, uint64_t count)
{
    const char** texts = allocate(count, sizeof *texts);
    const int status = get_channel_data_string(channel, texts);
    if (status == 0) {
        uint64_t smallest = 0;
        uint64_t largest = 0;
        uint64_t i;
        for (i = 1; i != count; ++i) {
            if (strcmp(texts[i], texts[smallest]) < 0) smallest = i;
            if (strcmp(texts[i], texts[largest]) > 0) largest = i;
        }
        printf("first \"%s\", last \"%s\", minimum \"%s\", maximum \"%s\"", texts[0],
               texts[count - 1], texts[smallest], texts[largest]);
    }
    free(texts);
    return status;
}

static int print_values(void* channel, int type, uint64_t count)
{
    if (type == TDMS_TYPE_TIMESTAMP) return print_times(channel, count);
    if (type == TDMS_TYPE_STRING) return print_texts(channel, count);
    return print_numbers(channel, type, count);
}

/* Prints a channel's values from a process of its own. Of all texts that a process reads, the
 * library hands out the first ones, so each string channel needs one; and what the library does not
 * read from a foreign file ends, in C, the process that asks for it. */
static void print_values_apart(void* channel, int type, uint64_t count)
{
    pid_t child;
    int result = 0;
    fflush(stdout);
    child = fork();
    if (child == 0) {
        int status;
        if (freopen("/dev/null", "w", stderr) == NULL) _exit(1);
        status = print_values(channel, type, count);
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
    const int type = get_channel_datatype(channel);
    uint64_t count = 0;
    print_name("    channel ", channel, get_channel_name);
    get_num_channel_data(channel, &count);
    printf(": %s, %" PRIu64 " values\n", type_name(type), count);
    print_properties(&CHANNEL_LEVEL, channel, 8);
    if (count == 0) return;
    printf("%8s", "");
    print_values_apart(channel, type, count);
    putchar('\n');
}

static void print_group(void* group)
{
    const int count = get_num_channel(group);
    void** channels = allocate((uint64_t)count, sizeof *channels);
    int i;
    print_name("group ", group, get_group_name);
    putchar('\n');
    print_properties(&GROUP_LEVEL, group, 4);
    get_channel(group, channels);
    for (i = 0; i != count; ++i) print_channel(channels[i]);
    free(channels);
}

int main(int argc, char** argv)
{
    struct stat facts;
    void* file;
    void** groups;
    int count;
    int status;
    int i;
    if (argc != 2) {
        fputs("usage: summary FILE\n", stderr);
        return 2;
    }
    if (stat(argv[1], &facts) == 0) file_size = (uint64_t)facts.st_size;
    status = open_file(argv[1], "r", &file);
    if (status != 0) {
        fprintf(stderr, "summary: %s: %s\n", argv[1], get_error_description(status));
        return 1;
    }
    printf("file %s\n", argv[1]);
    print_properties(&FILE_LEVEL, file, 4);
    count = get_num_group(file);
    groups = allocate((uint64_t)count, sizeof *groups);
    get_group(file, groups);
    for (i = 0; i != count; ++i) print_group(groups[i]);
    free(groups);
    close_file(&file);
    return 0;
}
