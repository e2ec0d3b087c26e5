#include "reader/stored_values.h"

#include "reader/saved_end.h"

namespace tdms_impl {

int locate_values(channel& c, stored_values& found)
{
    option& file = *c.group->file;
    found.file = reading_descriptor(file);
    if (found.file < 0 || !find_saved_size(file)) return TDMS_CHANNEL_DATA_READ;
    found.file_size = file.writable ? file.saved_size : file.file_size;
    if (file.stored == nullptr) file.stored = std::make_shared<value_index>();
    if (file.stored->update(found.file, found.file_size) != TDMS_OK) return TDMS_CHANNEL_DATA_READ;
    found.channel = file.stored->find(c.path);
    found.data_type = found.channel == nullptr ? 0 : found.channel->data_type();
    if (found.data_type == 0) found.data_type = c.data_type;
    return TDMS_OK;
}

int type_in_file(channel& c, std::uint32_t& type)
{
    type = c.data_type;
    if (!c.group->file->objects_removed) return TDMS_OK;
    stored_values found{};
    const int status = locate_values(c, found);
    if (status == TDMS_OK) type = found.data_type;
    return status;
}

}  // namespace tdms_impl
