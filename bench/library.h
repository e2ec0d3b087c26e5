/** Handles of this library, and its runs by the tdms_ interface. */
#ifndef TDMS_BENCH_LIBRARY_H
#define TDMS_BENCH_LIBRARY_H

#include <string>
#include <vector>

#include "workloads.h"

namespace bench {

/** The functions that both interfaces have. */
struct Interface {
    int (*open)(const char* path, const char* mode, void** file);
    int (*create_group)(void* file, const char* name, void** group);
    int (*create_channel)(void* group, const char* name, void** channel);
    int (*save)(void* file);
    int (*close)(void** file);
};

constexpr Interface first_interface{open_file, create_group, create_channel, save_file, close_file};
constexpr Interface tdms_interface{tdms_open, tdms_create_group, tdms_create_channel, tdms_save,
                                   tdms_close};

/** Throws if the status, of either interface, is a failure. */
void check(int status);

/** An open file with one group. */
class File {
  public:
    File(const Interface& functions, const std::string& path, const char* mode);
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { functions_.close(&file_); }

    std::vector<void*> create_channels(std::size_t count);
    std::vector<void*> channels() const;
    void save() { check(functions_.save(file_)); }
    void refresh() { check(tdms_refresh(file_, nullptr)); }
    /** What was saved counts only if closing succeeds, too. */
    void close() { check(functions_.close(&file_)); }

  private:
    const Interface& functions_;
    void* file_ = nullptr;
};

double append_and_save(Series& series);
double append_singly(Series& series);
double read_ranges(Series& series);
double write_nanoseconds(Series& none);
double read_nanoseconds(Series& none);

}  // namespace bench

#endif
