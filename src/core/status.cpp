#include <algorithm>
#include <array>

#include "tdms.h"

namespace {

struct status_messages {
    int status;
    const char* first;   // by get_error_description()
    const char* second;  // by tdms_status_text()
};

constexpr const char* no_message = "error code is error!";

// The first interface has no messages for the statuses of the second. Deliberate: nor has it one
// for TDMS_GROUP_REPEATED.
constexpr std::array all_messages = std::to_array<status_messages>({
    {TDMS_OK, "no error!", "No error."},
    {TDMS_FILE_PATH, "file path is error!", "The file cannot be opened."},
    {TDMS_FILE_TAG, "file TAG is error!",
     "A segment of the file does not begin with the tag TDSm."},
    {TDMS_FILE_TOC, "file TOC is error!",
     "A segment of the file is of a kind that is not supported."},
    {TDMS_FILE_VERSION, "file version is error!",
     "A segment of the file has a version other than 4713."},
    {TDMS_FILE_HANDLE, "file handle is invalid!",
     "The handle does not belong to an open file, or the file is open for reading only."},
    {TDMS_FILE_READ, "file reads falied!", "The file ends within a segment, or cannot be read."},
    {TDMS_FILE_PROPERTY_NAME, "file property name is invalid!",
     "The file has no property of that name."},
    {TDMS_FILE_PROPERTY_REPEATED, "file_property name is repeated!",
     "The file already has a property of that name."},
    {TDMS_FILE_DELETE, "file deletes failed!", "The file cannot be deleted."},
    {TDMS_INDEX, "the index is error!",
     "A raw data index in the file has a form that is not supported."},
    {TDMS_GROUP_HANDLE, "group handle is invalid!", "There is no such group in the file."},
    {TDMS_GROUP_REPEATED, no_message, "The file already has a group of that name."},
    {TDMS_GROUP_PROPERTY_NAME, "group property name is invalid!",
     "The group has no property of that name."},
    {TDMS_GROUP_PROPERTY_REPEATED, "group property name is repeated!",
     "The group already has a property of that name."},
    {TDMS_CHANNEL_HANDLE, "channel handle is invalid!", "There is no such channel in the group."},
    {TDMS_CHANNEL_READ, "channel reads failed!",
     "The metadata of a segment is damaged or contradictory."},
    {TDMS_CHANNEL_REPEATED, "channel name is repeated!",
     "The group already has a channel of that name."},
    {TDMS_CHANNEL_PROPERTY_NAME, "channel property name is invalid!",
     "The channel has no property of that name."},
    {TDMS_CHANNEL_PROPERTY_REPEATED, "channel property name is repeated!",
     "The channel already has a property of that name."},
    {TDMS_CHANNEL_DATATYPE, "channel datatype is error!",
     "The channel has values of another type."},
    {TDMS_CHANNEL_DATA_READ, "channel data reads failed!",
     "The values of the channel cannot be read."},
    {TDMS_CHANNEL_DATA_COUNT, "channel data num data reads failed!",
     "The number of values cannot be returned."},
    {TDMS_PROPERTY_BUFFER, "property buffer is insufficient!", "The buffer is too small."},
    {TDMS_ARGUMENT, no_message,
     "An argument is null, a handle of another kind, or a name, mode or string that is not "
     "allowed."},
    {TDMS_MEMORY, no_message, "There is not enough memory."},
    {TDMS_WRITE, no_message, "Writing to the file failed."},
    {TDMS_RANGE, no_message, "The range goes beyond the last value of the channel."},
    {TDMS_DATATYPE, no_message,
     "The property has another type, or the file contains an unknown type."},
});

status_messages messages_of(int status)
{
    const auto* const found = std::find_if(all_messages.begin(), all_messages.end(),
                                           [status](const auto& m) { return m.status == status; });
    return found == all_messages.end()
               ? status_messages{status, no_message, "The status is unknown."}
               : *found;
}

}  // namespace

const char* get_error_description(int code)
{
    return messages_of(code).first;
}

const char* tdms_status_text(int status)
{
    return messages_of(status).second;
}
