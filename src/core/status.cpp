#include "tdms.h"

const char* get_error_description(int code)
{
    switch (code) {
        case TDMS_OK:
            return "no error!";
        case TDMS_FILE_PATH:
            return "file path is error!";
        case TDMS_FILE_TAG:
            return "file TAG is error!";
        case TDMS_FILE_TOC:
            return "file TOC is error!";
        case TDMS_FILE_VERSION:
            return "file version is error!";
        case TDMS_FILE_HANDLE:
            return "file handle is invalid!";
        case TDMS_FILE_READ:
            return "file reads falied!";
        case TDMS_FILE_PROPERTY_NAME:
            return "file property name is invalid!";
        case TDMS_FILE_PROPERTY_REPEATED:
            return "file_property name is repeated!";
        case TDMS_FILE_DELETE:
            return "file deletes failed!";
        case TDMS_INDEX:
            return "the index is error!";
        case TDMS_GROUP_HANDLE:
            return "group handle is invalid!";
        case TDMS_GROUP_PROPERTY_NAME:
            return "group property name is invalid!";
        case TDMS_GROUP_PROPERTY_REPEATED:
            return "group property name is repeated!";
        case TDMS_CHANNEL_HANDLE:
            return "channel handle is invalid!";
        case TDMS_CHANNEL_READ:
            return "channel reads failed!";
        case TDMS_CHANNEL_REPEATED:
            return "channel name is repeated!";
        case TDMS_CHANNEL_PROPERTY_NAME:
            return "channel property name is invalid!";
        case TDMS_CHANNEL_PROPERTY_REPEATED:
            return "channel property name is repeated!";
        case TDMS_CHANNEL_DATATYPE:
            return "channel datatype is error!";
        case TDMS_CHANNEL_DATA_READ:
            return "channel data reads failed!";
        case TDMS_CHANNEL_DATA_COUNT:
            return "channel data num data reads failed!";
        case TDMS_PROPERTY_BUFFER:
            return "property buffer is insufficient!";
        // Deliberate: TDMS_GROUP_REPEATED has no message of its own.
        default:
            return "error code is error!";
    }
}

const char* tdms_status_text(int status)
{
    switch (status) {
        case TDMS_OK:
            return "No error.";
        case TDMS_FILE_PATH:
            return "The file cannot be opened.";
        case TDMS_FILE_TAG:
            return "A segment of the file does not begin with the tag TDSm.";
        case TDMS_FILE_TOC:
            return "A segment of the file is of a kind that is not supported.";
        case TDMS_FILE_VERSION:
            return "A segment of the file has a version other than 4713.";
        case TDMS_FILE_HANDLE:
            return "The handle does not belong to an open file, or the file is open for reading "
                   "only.";
        case TDMS_FILE_READ:
            return "The file ends within a segment, or cannot be read.";
        case TDMS_FILE_PROPERTY_NAME:
            return "The file has no property of that name.";
        case TDMS_FILE_PROPERTY_REPEATED:
            return "The file already has a property of that name.";
        case TDMS_FILE_DELETE:
            return "The file cannot be deleted.";
        case TDMS_INDEX:
            return "A raw data index in the file has a form that is not supported.";
        case TDMS_GROUP_HANDLE:
            return "There is no such group in the file.";
        case TDMS_GROUP_REPEATED:
            return "The file already has a group of that name.";
        case TDMS_GROUP_PROPERTY_NAME:
            return "The group has no property of that name.";
        case TDMS_GROUP_PROPERTY_REPEATED:
            return "The group already has a property of that name.";
        case TDMS_CHANNEL_HANDLE:
            return "There is no such channel in the group.";
        case TDMS_CHANNEL_READ:
            return "The metadata of a segment is damaged or contradictory.";
        case TDMS_CHANNEL_REPEATED:
            return "The group already has a channel of that name.";
        case TDMS_CHANNEL_PROPERTY_NAME:
            return "The channel has no property of that name.";
        case TDMS_CHANNEL_PROPERTY_REPEATED:
            return "The channel already has a property of that name.";
        case TDMS_CHANNEL_DATATYPE:
            return "The channel has values of another type.";
        case TDMS_CHANNEL_DATA_READ:
            return "The values of the channel cannot be read.";
        case TDMS_CHANNEL_DATA_COUNT:
            return "The number of values cannot be returned.";
        case TDMS_PROPERTY_BUFFER:
            return "The buffer is too small.";
        case TDMS_ARGUMENT:
            return "An argument is null, a handle of another kind, or a name, mode or text that is "
                   "not allowed.";
        case TDMS_MEMORY:
            return "There is not enough memory.";
        case TDMS_WRITE:
            return "Writing to the file failed.";
        case TDMS_RANGE:
            return "The range goes beyond the last value of the channel.";
        case TDMS_DATATYPE:
            return "The property has another type, or the file contains an unknown type.";
        default:
            return "The status is unknown.";
    }
}
