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
