#pragma once

// Handles of this library, and its runs through the tdms_ interface.

#include <string>
#include <vector>

#include "workloads.h"

namespace bench {

/// The functions that both interfaces have.
struct interface_functions {
    int (*open)(const char* path, const char* mode, void** file);
    int (*create_group)(void* file, const char* name, void** group);
    int (*create_channel)(void* group, const char* name, void** channel);
    int (*save)(void* file);
    int (*close)(void** file);
};

constexpr interface_functions first_interface{open_file, create_group, create_channel, save_file,
                                              close_file};
constexpr interface_functions tdms_interface{tdms_open, tdms_create_group, tdms_create_channel,
                                             tdms_save, tdms_close};

/// Throws if a status of either interface is a failure.
void check(int status);

/// An open file with one group.
class library_handle {
  public:
    library_handle(const interface_functions& functions, const std::string& path, const char* mode);
    library_handle(const library_handle&) = delete;
    library_handle& operator=(const library_handle&) = delete;
    ~library_handle() { functions_.close(&file_); }

    std::vector<void*> create_channels(std::size_t count);
    std::vector<void*> channels() const;
    void save() { check(functions_.save(file_)); }
    void refresh() { check(tdms_refresh(file_, nullptr)); }
    /// Throws if closing fails, which would mean that the file is not saved.
    void close() { check(functions_.close(&file_)); }

  private:
    const interface_functions& functions_;
    void* file_ = nullptr;
};

double append_and_save(workload_data& series);
double append_singly(workload_data& series);
double read_ranges(workload_data& series);
double write_nanoseconds(workload_data& none);
double read_nanoseconds(workload_data& none);

}  // namespace bench
