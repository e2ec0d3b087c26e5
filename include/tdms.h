/**
 * @file tdms.h
 * @brief Reads and writes measurement files in the TDMS format.
 *
 * A file is a tree: the file, its named groups, their named channels. Every object has named, typed
 * properties; every channel has a sequence of values of one type.
 *
 * There are two interfaces to the same handles, the same tree and the same files. New programs
 * should use the second one, @ref tdms "tdms_", which has its own conventions. The first one is
 * documented first; it does not change, because programs depend on it. Its functions that count,
 * list and delete objects, and those for properties, serve both. Comments name the traps of the
 * first interface, and the functions that avoid them.
 *
 * The conventions of the first interface hold for each of its functions, unless the function's
 * comment says otherwise:
 *
 *  1. The result is 0 on success and a negative status (::tdms_status) on failure. Functions that
 *     count, or that ask for a type, return the count or the type code instead of 0.
 *     get_error_description() returns the message of a status. Outputs are written on success only.
 *  2. Handles are opaque pointers to objects that the library owns. A file handle is valid until
 *     close_file(). A group or channel handle is valid until its object is deleted or replaced, its
 *     group deleted, or its file closed. Using an invalid handle is undefined, as it is for a
 *     closed `FILE*`. A null handle yields the status of its level: #TDMS_FILE_HANDLE,
 *     #TDMS_GROUP_HANDLE or #TDMS_CHANNEL_HANDLE. For a channel, #TDMS_GROUP_HANDLE means that its
 *     group is no longer in the file.
 *  3. Arrays and buffers belong to the caller; the matching get_num function returns the number of
 *     elements. They may be null when there is nothing to write. Otherwise a null output yields the
 *     status that the function names for its handle or its result.
 *  4. Names and strings end with a NUL, and are copied by the call. Nothing is escaped or rejected;
 *     empty names are valid.
 *  5. Objects are listed in the byte order of their paths, whatever the order of creation.
 *  6. Values and properties stay in memory until save_file() or tdms_save() appends them to the
 *     file. close_file() does not save.
 *  7. One file, with everything in it, is for one thread at a time; different files may be used by
 *     different threads at once. Opening and closing lock a registry, so these calls wait for each
 *     other.
 *  8. C++ exceptions propagate out of these functions. A null name, path or mode, or a null among
 *     string values, raises a logic error. A data type in a file that the format does not know
 *     raises an out-of-range error. A failed allocation raises std::bad_alloc, or std::length_error
 *     where a count exceeds any memory. The library stays consistent and unlocked. Exceptions
 *     terminate a C program; no tdms_ function throws.
 */
#ifndef TDMS_H
#define TDMS_H

#include <stdbool.h>
#include <stdint.h>

#define TDMS_VERSION_MAJOR 1 /**< this header's version: rises when programs must change */
#define TDMS_VERSION_MINOR 1 /**< rises with new functions */
#define TDMS_VERSION_PATCH 0 /**< rises with corrections */
#define TDMS_VERSION "1.1.0" /**< all three as a string */

#if defined(__GNUC__)
#define TDMS_API __attribute__((visibility("default")))
#else
#define TDMS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What a function returns: 0, or one of these when it fails. */
enum tdms_status {
    TDMS_OK = 0,                            /**< no error */
    TDMS_FILE_PATH = -5001,                 /**< the file cannot be opened */
    TDMS_FILE_TAG = -5002,                  /**< a segment does not begin with the format's tag */
    TDMS_FILE_TOC = -5003,                  /**< a segment has an unsupported table of contents */
    TDMS_FILE_VERSION = -5004,              /**< a segment has a version other than 4713 */
    TDMS_FILE_HANDLE = -5005,               /**< the handle is null, has no stream, or only reads */
    TDMS_FILE_READ = -5006,                 /**< the file ends early or cannot be read */
    TDMS_FILE_PROPERTY_NAME = -5007,        /**< the file has no property of that name */
    TDMS_FILE_PROPERTY_REPEATED = -5008,    /**< the file has a property of that name already */
    TDMS_FILE_DELETE = -5009,               /**< the file cannot be removed */
    TDMS_INDEX = -5010,                     /**< a raw data index has an unsupported form */
    TDMS_GROUP_HANDLE = -5011,              /**< the group is null or not in its file */
    TDMS_GROUP_REPEATED = -5012,            /**< the file has a group of that name already */
    TDMS_GROUP_PROPERTY_NAME = -5013,       /**< the group has no property of that name */
    TDMS_GROUP_PROPERTY_REPEATED = -5014,   /**< the group has a property of that name already */
    TDMS_CHANNEL_HANDLE = -5015,            /**< the channel is null or not in its group */
    TDMS_CHANNEL_READ = -5016,              /**< a segment's metadata is damaged or contradictory */
    TDMS_CHANNEL_REPEATED = -5017,          /**< a channel has the new channel's path as its name */
    TDMS_CHANNEL_PROPERTY_NAME = -5018,     /**< the channel has no property of that name */
    TDMS_CHANNEL_PROPERTY_REPEATED = -5019, /**< the channel has a property of that name already */
    TDMS_CHANNEL_DATATYPE = -5020,          /**< the channel holds values of another type */
    TDMS_CHANNEL_DATA_READ = -5021,         /**< the channel's values cannot be read */
    TDMS_CHANNEL_DATA_COUNT = -5022,        /**< the output for the count is null */
    TDMS_PROPERTY_BUFFER = -5023,           /**< the buffer is too small */
    TDMS_ARGUMENT = -5101,                  /**< an argument is null or not allowed */
    TDMS_MEMORY = -5102,                    /**< not enough memory */
    TDMS_WRITE = -5103,                     /**< the system did not accept what was written */
    TDMS_RANGE = -5104,                     /**< beyond the channel's last value */
    TDMS_DATATYPE = -5105                   /**< the property has another type, or the file has a
                                                 type that the format does not know */
};

/** Data type codes of channels and properties. */
enum tdms_type {
    TDMS_TYPE_VOID = 0,        /**< no type yet: a channel that never got values */
    TDMS_TYPE_INT8 = 1,        /**< signed 8-bit integer */
    TDMS_TYPE_INT16 = 2,       /**< signed 16-bit integer */
    TDMS_TYPE_INT32 = 3,       /**< signed 32-bit integer */
    TDMS_TYPE_INT64 = 4,       /**< signed 64-bit integer */
    TDMS_TYPE_UINT8 = 5,       /**< unsigned 8-bit integer */
    TDMS_TYPE_UINT16 = 6,      /**< unsigned 16-bit integer */
    TDMS_TYPE_UINT32 = 7,      /**< unsigned 32-bit integer */
    TDMS_TYPE_UINT64 = 8,      /**< unsigned 64-bit integer */
    TDMS_TYPE_FLOAT = 9,       /**< IEEE 754 single precision */
    TDMS_TYPE_DOUBLE = 10,     /**< IEEE 754 double precision */
    TDMS_TYPE_STRING = 0x20,   /**< string */
    TDMS_TYPE_BOOL = 0x21,     /**< boolean, one byte */
    TDMS_TYPE_TIMESTAMP = 0x44 /**< date and time, 16 bytes in the file */
};

/**
 * A calendar time in the local time zone.
 *
 * Written as standard time even during daylight saving, read as local clock time; a DST time comes
 * back one hour later. Only times from 1970-01-01 to 2038-01-19 (UTC) read back. Nanoseconds have
 * none of these limits: tdms_append_nanoseconds(), tdms_read_nanoseconds(),
 * tdms_create_file_property_nanoseconds() and the like.
 */
typedef struct timestamp_fields {
    int32_t year;        /**< full year, such as 2024 */
    int32_t month;       /**< 1 to 12 */
    int32_t day;         /**< day of the month, 1 to 31 */
    int32_t hour;        /**< 0 to 23 */
    int32_t minute;      /**< 0 to 59 */
    int32_t second;      /**< 0 to 60 */
    int32_t microsecond; /**< 0 to 999999 */
} timestamp_fields;

/** @defgroup errors Errors
 *  @{ */

/**
 * The message of a status of the first interface. tdms_status_text() has one for every status.
 * @param code a status; any value is allowed
 * @return a static string, never null, not to be freed; "error code is error!" for a value without
 *         a message of its own, including #TDMS_GROUP_REPEATED
 */
TDMS_API const char* get_error_description(int code);

/** @} */

/** @defgroup file Files
 *  @{ */

/**
 * Opens a file.
 *
 * A stream stays open until the process ends if the lead-in or metadata of a segment is rejected,
 * and so does the stream through which "a" reads. A truncated file, or one that is being recorded,
 * does not open. Locks are neither taken nor respected. tdms_open() has none of these traps;
 * tdms_open_partial() opens what is intact of a file.
 * @param path the file's path
 * @param mode "r" reads an existing file, "w" creates or empties one, "a" reads an existing file
 *        and appends to it; an empty file is a valid file. Any other mode, and "a" for a file that
 *        can be read but not written, succeeds with a handle that has no stream. This is intended:
 *        objects can be created on it, saving yields #TDMS_FILE_HANDLE, and reading values
 *        #TDMS_CHANNEL_DATA_READ
 * @param[out] file the handle; untouched on failure
 * @return 0; #TDMS_FILE_PATH; with "r" also #TDMS_FILE_TAG, #TDMS_FILE_TOC, #TDMS_FILE_VERSION,
 *         #TDMS_FILE_READ, #TDMS_INDEX or #TDMS_CHANNEL_READ, depending on the first fault;
 *         with "a" #TDMS_FILE_READ for every failure to read; #TDMS_FILE_HANDLE when `file`
 *         is null
 */
TDMS_API int open_file(const char* path, const char* mode, void** file);

/**
 * Appends what changed to the file, as two segments: first the new properties with the values of
 * the timestamp channels, then the values of all other channels.
 *
 * Properties are written once; they leave memory with the save, so that the same name can be
 * created again. Staged values stay and are written again by the next save, unless new ones are
 * staged. Of several timestamp channels in a file only the last one's values are stored. Of several
 * groups, get_channel_data_double() and the like can read at most one.
 *
 * In a file that open_file() opened with "a", every channel that the file holds must be staged
 * before the first save, with a count of 0 if there is nothing to add. For a channel that was not
 * staged, the save states the number of values of its last segment again but writes none, and the
 * file then holds fewer bytes than it claims.
 *
 * Errors of the stream, such as a full disk, are not reported. Saving a file opened with "r" writes
 * nothing, yet drops its properties. The stream's buffer is not flushed before close_file().
 *
 * tdms_save() has none of these traps: it stores every value once, in one segment, and reports
 * failures.
 * @return 0; #TDMS_FILE_HANDLE, and nothing changes, when `file` is null or has no stream
 */
TDMS_API int save_file(void* file);

/**
 * Closes a file without saving, and frees everything in it. What the stream still buffers is
 * written; if that fails, only tdms_close() reports it.
 * @param[in,out] file the handle's variable; set to null
 * @return 0; #TDMS_FILE_HANDLE when `file` or the handle is null
 */
TDMS_API int close_file(void** file);

/**
 * Removes a file from the disk. A handle that has it open keeps working on the unlinked file.
 * @return 0; #TDMS_FILE_DELETE
 */
TDMS_API int delete_file(const char* path);

/** @} */

/** @defgroup groups Groups
 *  @{ */

/**
 * Creates an empty group. A name with a slash is not read back as a group of that name, because
 * slashes in a path separate groups from channels. A name that is, or begins or ends with, a slash
 * makes a file that cannot be opened. tdms_create_group() rejects such names.
 * @param[out] group the new group's handle
 * @return 0; #TDMS_FILE_HANDLE; #TDMS_GROUP_REPEATED when the file has a group of that name;
 *         #TDMS_GROUP_HANDLE when `group` is null
 */
TDMS_API int create_group(void* file, const char* name, void** group);

/** @return the number of groups; #TDMS_FILE_HANDLE */
TDMS_API int get_num_group(void* file);

/**
 * Lists the groups.
 * @param[out] list get_num_group() handles
 * @return 0; #TDMS_FILE_HANDLE, also when `list` is null and the file has groups
 */
TDMS_API int get_group(void* file, void** list);

/**
 * The group's name. tdms_get_group_name() needs no buffer, and returns the length.
 * @param[out] name the name's bytes and a NUL; no size is checked
 * @return 0; #TDMS_GROUP_HANDLE, also when `name` is null
 */
TDMS_API int get_group_name(void* group, char* name);

/**
 * Removes the group with its channels and properties from memory; the file on disk stays as it is.
 * @return 0; #TDMS_GROUP_HANDLE
 */
TDMS_API int delete_group(void* group);

/** @} */

/** @defgroup channels Channels
 *  @{ */

/**
 * Creates a channel without a type or values. A channel of the same name is replaced: it is
 * destroyed with its properties and staged values, and its handle is no longer valid. If the file
 * on disk has values of that channel already, stage values of the same type before the next save; a
 * count of 0 suffices. Otherwise the channel may change its type in the file, and the file cannot
 * be opened. tdms_create_channel() never replaces a channel, and tdms_save() never changes a type.
 * @param[out] channel the new channel's handle
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_REPEATED when the group has a channel whose name is
 *         the new channel's path; #TDMS_CHANNEL_HANDLE when `channel` is null
 */
TDMS_API int create_channel(void* group, const char* name, void** channel);

/** @return the number of channels in the group; #TDMS_GROUP_HANDLE */
TDMS_API int get_num_channel(void* group);

/**
 * Lists the channels of a group.
 * @param[out] list get_num_channel() handles
 * @return 0; #TDMS_GROUP_HANDLE, also when `list` is null and the group has channels
 */
TDMS_API int get_channel(void* group, void** list);

/**
 * The channel's name. tdms_get_channel_name() needs no buffer, and returns the length.
 * @param[out] name the name's bytes and a NUL; no size is checked
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE, also when `name` is null
 */
TDMS_API int get_channel_name(void* channel, char* name);

/**
 * Removes the channel with its properties and staged values from memory; the file on disk stays as
 * it is.
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE
 */
TDMS_API int delete_channel(void* channel);

/** @return the type code of the channel's values (::tdms_type); 0 while it has none;
 *          #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE */
TDMS_API int get_channel_datatype(void* channel);

/**
 * The number of values that the file stated for the channel when it was opened, plus those that
 * tdms_refresh() has taken in since. Staging and saving do not change it. tdms_get_num_values()
 * counts what can be read now.
 * @param[out] count the number of values
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE; #TDMS_CHANNEL_DATA_COUNT when `count` is
 *         null
 */
TDMS_API int get_num_channel_data(void* channel, uint64_t* count);

/** @} */

/** @defgroup properties Properties
 *
 * A property is addressed by its owner's handle and its name. No function here changes its value:
 * to replace a property, delete it and create it again, or use tdms_set_property().
 *  @{ */

/** @name How many properties an object has
 * @return the number of properties; for a file #TDMS_FILE_HANDLE, for a group #TDMS_GROUP_HANDLE,
 *         for a channel #TDMS_GROUP_HANDLE or #TDMS_CHANNEL_HANDLE
 * @{ */
TDMS_API int get_num_file_property(void* file);
TDMS_API int get_num_group_property(void* group);
TDMS_API int get_num_channel_property(void* channel);
/** @} */

/** @name The names of an object's properties
 * @param[out] names as many pointers as the get_num function returns. The library owns the names;
 *        each stays valid until its property is deleted or saved by save_file(), or its object or
 *        file is destroyed
 * @return 0; the handle's status as for counting; #TDMS_FILE_PROPERTY_NAME,
 *         #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME when `names` is null and there
 *         are properties
 * @{ */
TDMS_API int get_file_property(void* file, const char** names);
TDMS_API int get_group_property(void* group, const char** names);
TDMS_API int get_channel_property(void* channel, const char** names);
/** @} */

/** @name The data type of a property
 * @return the type code (::tdms_type); the handle's status as for counting;
 *         #TDMS_FILE_PROPERTY_NAME, #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME when
 *         there is no property of that name
 * @{ */
TDMS_API int get_file_property_datatype(void* file, const char* name);
TDMS_API int get_group_property_datatype(void* group, const char* name);
TDMS_API int get_channel_property_datatype(void* channel, const char* name);
/** @} */

/** @name Deleting a property
 * Removes the property from memory; the file on disk stays as it is.
 * @return 0; the handle's status as for counting; #TDMS_FILE_PROPERTY_NAME,
 *         #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME when there is no property of
 *         that name
 * @{ */
TDMS_API int delete_file_property(void* file, const char* name);
TDMS_API int delete_group_property(void* group, const char* name);
TDMS_API int delete_channel_property(void* channel, const char* name);
/** @} */

/** @name Creating a property of a file
 * The value is copied. A property of that name stays as it is, unless tdms_save() has written it on
 * this handle: then it is replaced.
 * @return 0; #TDMS_FILE_HANDLE; #TDMS_FILE_PROPERTY_REPEATED
 * @{ */
TDMS_API int create_file_property_int8(void* file, const char* name, int8_t value);
TDMS_API int create_file_property_int16(void* file, const char* name, int16_t value);
TDMS_API int create_file_property_int32(void* file, const char* name, int32_t value);
TDMS_API int create_file_property_int64(void* file, const char* name, int64_t value);
TDMS_API int create_file_property_uint8(void* file, const char* name, uint8_t value);
TDMS_API int create_file_property_uint16(void* file, const char* name, uint16_t value);
TDMS_API int create_file_property_uint32(void* file, const char* name, uint32_t value);
TDMS_API int create_file_property_uint64(void* file, const char* name, uint64_t value);
TDMS_API int create_file_property_float(void* file, const char* name, float value);
TDMS_API int create_file_property_double(void* file, const char* name, double value);
TDMS_API int create_file_property_string(void* file, const char* name, const char* value);
TDMS_API int create_file_property_bool(void* file, const char* name, bool value);
TDMS_API int create_file_property_timestamp(void* file, const char* name, timestamp_fields value);
/** @} */

/** @name The value of a file property
 * The stored bytes are decoded as the function's type, whatever the property's type is.
 * tdms_get_property() returns the type with the value; the tdms_ getters for strings and times
 * check it, and write their outputs on success only.
 * @param[out] value one value. If there is no property of that name, or it has too few bytes, zero
 *        is written, for a timestamp to every field
 * @param[out] buffer the string and a NUL
 * @param size the buffer's size in bytes: at least the string's length plus 5
 * @return 0; #TDMS_FILE_HANDLE; #TDMS_FILE_PROPERTY_NAME; #TDMS_PROPERTY_BUFFER when `size` is too
 * small, or when `value` or `buffer` is null
 * @{ */
TDMS_API int get_file_property_int8(void* file, const char* name, int8_t* value);
TDMS_API int get_file_property_int16(void* file, const char* name, int16_t* value);
TDMS_API int get_file_property_int32(void* file, const char* name, int32_t* value);
TDMS_API int get_file_property_int64(void* file, const char* name, int64_t* value);
TDMS_API int get_file_property_uint8(void* file, const char* name, uint8_t* value);
TDMS_API int get_file_property_uint16(void* file, const char* name, uint16_t* value);
TDMS_API int get_file_property_uint32(void* file, const char* name, uint32_t* value);
TDMS_API int get_file_property_uint64(void* file, const char* name, uint64_t* value);
TDMS_API int get_file_property_float(void* file, const char* name, float* value);
TDMS_API int get_file_property_double(void* file, const char* name, double* value);
TDMS_API int get_file_property_string(void* file, const char* name, char* buffer, uint64_t size);
TDMS_API int get_file_property_bool(void* file, const char* name, bool* value);
TDMS_API int get_file_property_timestamp(void* file, const char* name, timestamp_fields* value);
/** @} */

/** @name Creating a property of a group
 * The value is copied. A property of that name stays as it is, unless tdms_save() has written it on
 * this handle: then it is replaced.
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_GROUP_PROPERTY_REPEATED
 * @{ */
TDMS_API int create_group_property_int8(void* group, const char* name, int8_t value);
TDMS_API int create_group_property_int16(void* group, const char* name, int16_t value);
TDMS_API int create_group_property_int32(void* group, const char* name, int32_t value);
TDMS_API int create_group_property_int64(void* group, const char* name, int64_t value);
TDMS_API int create_group_property_uint8(void* group, const char* name, uint8_t value);
TDMS_API int create_group_property_uint16(void* group, const char* name, uint16_t value);
TDMS_API int create_group_property_uint32(void* group, const char* name, uint32_t value);
TDMS_API int create_group_property_uint64(void* group, const char* name, uint64_t value);
TDMS_API int create_group_property_float(void* group, const char* name, float value);
TDMS_API int create_group_property_double(void* group, const char* name, double value);
TDMS_API int create_group_property_string(void* group, const char* name, const char* value);
TDMS_API int create_group_property_bool(void* group, const char* name, bool value);
TDMS_API int create_group_property_timestamp(void* group, const char* name, timestamp_fields value);
/** @} */

/** @name The value of a group property
 * The stored bytes are decoded as the function's type, whatever the property's type is.
 * tdms_get_property() returns the type with the value; the tdms_ getters for strings and times
 * check it, and write their outputs on success only.
 * @param[out] value one value. If there is no property of that name, or it has too few bytes, zero
 *        is written, for a timestamp to every field
 * @param[out] buffer the string and a NUL
 * @param size the buffer's size in bytes: at least the string's length plus 5
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_GROUP_PROPERTY_NAME; #TDMS_PROPERTY_BUFFER when `size` is
 * too small, or when `value` or `buffer` is null
 * @{ */
TDMS_API int get_group_property_int8(void* group, const char* name, int8_t* value);
TDMS_API int get_group_property_int16(void* group, const char* name, int16_t* value);
TDMS_API int get_group_property_int32(void* group, const char* name, int32_t* value);
TDMS_API int get_group_property_int64(void* group, const char* name, int64_t* value);
TDMS_API int get_group_property_uint8(void* group, const char* name, uint8_t* value);
TDMS_API int get_group_property_uint16(void* group, const char* name, uint16_t* value);
TDMS_API int get_group_property_uint32(void* group, const char* name, uint32_t* value);
TDMS_API int get_group_property_uint64(void* group, const char* name, uint64_t* value);
TDMS_API int get_group_property_float(void* group, const char* name, float* value);
TDMS_API int get_group_property_double(void* group, const char* name, double* value);
TDMS_API int get_group_property_string(void* group, const char* name, char* buffer, uint64_t size);
TDMS_API int get_group_property_bool(void* group, const char* name, bool* value);
TDMS_API int get_group_property_timestamp(void* group, const char* name, timestamp_fields* value);
/** @} */

/** @name Creating a property of a channel
 * The value is copied. A property of that name stays as it is, unless tdms_save() has written it on
 * this handle: then it is replaced.
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE; #TDMS_CHANNEL_PROPERTY_REPEATED
 * @{ */
TDMS_API int create_channel_property_int8(void* channel, const char* name, int8_t value);
TDMS_API int create_channel_property_int16(void* channel, const char* name, int16_t value);
TDMS_API int create_channel_property_int32(void* channel, const char* name, int32_t value);
TDMS_API int create_channel_property_int64(void* channel, const char* name, int64_t value);
TDMS_API int create_channel_property_uint8(void* channel, const char* name, uint8_t value);
TDMS_API int create_channel_property_uint16(void* channel, const char* name, uint16_t value);
TDMS_API int create_channel_property_uint32(void* channel, const char* name, uint32_t value);
TDMS_API int create_channel_property_uint64(void* channel, const char* name, uint64_t value);
TDMS_API int create_channel_property_float(void* channel, const char* name, float value);
TDMS_API int create_channel_property_double(void* channel, const char* name, double value);
TDMS_API int create_channel_property_string(void* channel, const char* name, const char* value);
TDMS_API int create_channel_property_bool(void* channel, const char* name, bool value);
TDMS_API int create_channel_property_timestamp(void* channel, const char* name,
                                               timestamp_fields value);
/** @} */

/** @name The value of a channel property
 * The stored bytes are decoded as the function's type, whatever the property's type is.
 * tdms_get_property() returns the type with the value; the tdms_ getters for strings and times
 * check it, and write their outputs on success only.
 * @param[out] value one value. If there is no property of that name, or it has too few bytes, zero
 *        is written, for a timestamp to every field
 * @param[out] buffer the string and a NUL
 * @param size the buffer's size in bytes: at least the string's length plus 5
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE; #TDMS_CHANNEL_PROPERTY_NAME;
 * #TDMS_PROPERTY_BUFFER when `size` is too small, or when `value` or `buffer` is null
 * @{ */
TDMS_API int get_channel_property_int8(void* channel, const char* name, int8_t* value);
TDMS_API int get_channel_property_int16(void* channel, const char* name, int16_t* value);
TDMS_API int get_channel_property_int32(void* channel, const char* name, int32_t* value);
TDMS_API int get_channel_property_int64(void* channel, const char* name, int64_t* value);
TDMS_API int get_channel_property_uint8(void* channel, const char* name, uint8_t* value);
TDMS_API int get_channel_property_uint16(void* channel, const char* name, uint16_t* value);
TDMS_API int get_channel_property_uint32(void* channel, const char* name, uint32_t* value);
TDMS_API int get_channel_property_uint64(void* channel, const char* name, uint64_t* value);
TDMS_API int get_channel_property_float(void* channel, const char* name, float* value);
TDMS_API int get_channel_property_double(void* channel, const char* name, double* value);
TDMS_API int get_channel_property_string(void* channel, const char* name, char* buffer,
                                         uint64_t size);
TDMS_API int get_channel_property_bool(void* channel, const char* name, bool* value);
TDMS_API int get_channel_property_timestamp(void* channel, const char* name,
                                            timestamp_fields* value);
/** @} */

/** @} */

/** @defgroup data Values
 *  @{ */

/** @name Staging values
 * Stages a channel's values for the next save, in place of those staged before. The first staging
 * fixes the channel's type; only values of that type can be staged from then on.
 * tdms_append_double() and the like add to what is staged, and reject 4 GiB of strings.
 * @param count the number of values; 0 is allowed and fixes the type too
 * @param values an array of `count` values, copied by the call. Strings must be less than 4 GiB in
 *        total, because the end of each is stored as a 32-bit number
 * @return 0; #TDMS_GROUP_HANDLE; #TDMS_CHANNEL_HANDLE; #TDMS_CHANNEL_DATATYPE when the channel has
 *         another type; #TDMS_CHANNEL_DATA_READ when `values` is null and `count` is not 0. On
 *         failure the channel keeps what was staged before
 * @{ */
TDMS_API int set_channel_data_int8(void* channel, uint64_t count, const int8_t* values);
TDMS_API int set_channel_data_int16(void* channel, uint64_t count, const int16_t* values);
TDMS_API int set_channel_data_int32(void* channel, uint64_t count, const int32_t* values);
TDMS_API int set_channel_data_int64(void* channel, uint64_t count, const int64_t* values);
TDMS_API int set_channel_data_uint8(void* channel, uint64_t count, const uint8_t* values);
TDMS_API int set_channel_data_uint16(void* channel, uint64_t count, const uint16_t* values);
TDMS_API int set_channel_data_uint32(void* channel, uint64_t count, const uint32_t* values);
TDMS_API int set_channel_data_uint64(void* channel, uint64_t count, const uint64_t* values);
TDMS_API int set_channel_data_float(void* channel, uint64_t count, const float* values);
TDMS_API int set_channel_data_double(void* channel, uint64_t count, const double* values);
TDMS_API int set_channel_data_string(void* channel, uint64_t count, const char* const* values);
TDMS_API int set_channel_data_bool(void* channel, uint64_t count, const bool* values);
TDMS_API int set_channel_data_timestamp(void* channel, uint64_t count,
                                        const timestamp_fields* values);
/** @} */

/** @name Reading values
 * Reads all values that the file held for a channel when it was opened, segment by segment.
 *
 * If a segment has values of another group before those of the channel's group, the call fails with
 * #TDMS_CHANNEL_DATA_READ. If it lists an object outside the group after one of the group's
 * channels, the call throws an out-of-range error. This affects files of several groups that have
 * values or channel properties, even those that this library wrote. A file that open_file() opened
 * with "w" has no values to read. One opened with "a" cannot be read unless it was empty, and the
 * attempt closes its stream.
 *
 * tdms_read_double() and the like read any range of any channel of any group, on any handle, and do
 * not throw.
 * @param[out] values get_num_channel_data() values. On failure it is untouched, except when the
 *             device fails, or the file is truncated, during the read
 * @return 0; #TDMS_CHANNEL_HANDLE; #TDMS_CHANNEL_DATA_READ when anything about the file or the
 *         handle prevents reading, or `values` is null and there are values;
 *         #TDMS_CHANNEL_DATATYPE when the channel has another type
 * @{ */
TDMS_API int get_channel_data_int8(void* channel, int8_t* values);
TDMS_API int get_channel_data_int16(void* channel, int16_t* values);
TDMS_API int get_channel_data_int32(void* channel, int32_t* values);
TDMS_API int get_channel_data_int64(void* channel, int64_t* values);
TDMS_API int get_channel_data_uint8(void* channel, uint8_t* values);
TDMS_API int get_channel_data_uint16(void* channel, uint16_t* values);
TDMS_API int get_channel_data_uint32(void* channel, uint32_t* values);
TDMS_API int get_channel_data_uint64(void* channel, uint64_t* values);
TDMS_API int get_channel_data_float(void* channel, float* values);
TDMS_API int get_channel_data_double(void* channel, double* values);
TDMS_API int get_channel_data_bool(void* channel, bool* values);
TDMS_API int get_channel_data_timestamp(void* channel, timestamp_fields* values);
/** @} */

/**
 * Reads the strings of a string channel, under the same rules as the other readers.
 *
 * All strings read by the process are added to one storage. The pointers returned are the storage's
 * first ones, as intended: the first call of a process returns the strings just read; later calls
 * return the earliest strings again; their own appear only from the index at which they were
 * stored. Several threads may call this function for different files. tdms_read_string() reads into
 * the caller's memory, and has none of these traps.
 * @param[out] values get_num_channel_data() pointers. The library owns the strings; they stay valid
 *             until the process ends
 * @return as the other readers
 */
TDMS_API int get_channel_data_string(void* channel, const char** values);

/** @} */

/** @defgroup tdms The tdms_ interface
 *
 * A second interface to the same handles, the same tree and the same files, which reports every
 * failure and loses nothing. The two may be mixed on one handle; to count, list and delete objects,
 * use the functions above. Its conventions:
 *
 *  1. The result is 0 or a negative status; tdms_status_text() returns its message. Outputs are
 *     written on success only, with one exception: if the device fails, or the file is truncated,
 *     during a read, the caller's array may hold some of the values.
 *  2. A null argument, a handle of another kind, or any other invalid argument yields
 *     #TDMS_ARGUMENT; where null is allowed, the function says so. Using a handle that is no longer
 *     valid is undefined, as above.
 *  3. A lack of memory yields #TDMS_MEMORY and changes nothing, except that tdms_refresh() may
 *     already have taken in some segments. The same call can be made again. No function throws,
 *     ends the process or leaks.
 *  4. On a read-only handle, or one without a stream, creating, appending, saving and syncing yield
 *     #TDMS_FILE_HANDLE and change nothing. (The functions for properties above do not check this;
 *     tdms_save() does.)
 *  5. Times are nanoseconds since 1970-01-01T00:00:00 UTC, without leap seconds, in a signed 64-bit
 *     number, which covers the years 1677 to 2262. Each of them reads back exactly; an earlier or
 *     later time in a file reads as the first or the last of them. Time zones and daylight saving
 *     play no part.
 *  6. One file, with everything in it, is for one thread at a time; different files may be used by
 *     different threads at once.
 *  @{ */

/**
 * The message of a status of either interface.
 * @param status a status; any value is allowed
 * @return one English sentence, static, never null, not to be freed
 */
TDMS_API const char* tdms_status_text(int status);

/** @name Opening, saving and closing
 *  @{ */

/**
 * Opens a file.
 *
 * "w" and "a" lock the file against other writers (an exclusive advisory lock, flock) as long as
 * the handle is valid; where the file system has no locks, nothing is locked. Readers take no lock
 * and ignore the writer's. A file that is being recorded may end within the segment that is being
 * saved; "r" then yields #TDMS_FILE_READ, and tdms_open_partial() opens the file. A call that fails
 * leaves no descriptor open and changes no byte.
 * @param path the file's path
 * @param mode "r" reads a file, every segment of which must be intact. "w" creates a file, or
 *        empties an existing one. "a" opens a file as "r" does, and appends to it. A file opened
 *        with "w" or "a" can be read, too, and both modes need permission to read it
 * @param[out] file the handle, for tdms_close()
 * @return 0; #TDMS_FILE_PATH with errno if the file cannot be opened, or not written to with "w" or
 *         "a": EWOULDBLOCK if another handle writes to it; the status of the first fault in the
 *         file: #TDMS_FILE_TAG, #TDMS_FILE_TOC, #TDMS_FILE_VERSION, #TDMS_FILE_READ, #TDMS_INDEX,
 *         #TDMS_CHANNEL_READ, #TDMS_DATATYPE; #TDMS_ARGUMENT, also for any other mode; #TDMS_MEMORY
 */
TDMS_API int tdms_open(const char* path, const char* mode, void** file);

/**
 * Opens for reading what is intact of a file that was truncated or is being recorded: all segments
 * before the first one that is not intact. A file that ends within its first segment opens empty.
 * @param[out] file the handle, for tdms_close()
 * @param[out] rest how many bytes follow the intact segments: 0 for an intact file; may be null
 * @return as tdms_open(); the faults are those of the first segment, and #TDMS_FILE_READ if the
 *         device fails
 */
TDMS_API int tdms_open_partial(const char* path, void** file, uint64_t* rest);

/**
 * Takes in the intact segments that were appended to a file since it was opened for reading, or
 * since the last call: groups, channels, properties and values. All handles and names stay valid,
 * and so does the string of a property unless a new segment changes it. On a handle opened
 * for writing, it does nothing.
 *
 * A file that was emptied and is recorded again is not the one that was opened. Once a call has
 * detected that, every later one fails, too: close the handle and open the file again. Two changes
 * go undetected: a new recording that has outgrown the old one by the next call, with segments of
 * the same sizes, and another file that has taken the same name.
 * @param[out] rest how many bytes follow the intact segments; may be null
 * @return 0; #TDMS_FILE_READ if that was detected or the file is shorter than before (the handle
 *         keeps what it knows), or if the device fails; #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_refresh(void* file, uint64_t* rest);

/**
 * Appends one segment to the file: the properties, groups and channels that it does not have yet,
 * and the values of every channel appended or staged since the last save. If nothing is new,
 * nothing is written. Values leave memory; properties can still be read, and a saved property can
 * be created again, which replaces it.
 *
 * On success the operating system has all of it: a process that is killed afterwards loses none. If
 * the write fails (disk full, quota, size limit, device gone), the file is truncated to the end of
 * the last save, and everything stays in memory for the next call.
 * @return 0; #TDMS_WRITE with errno, also for what an earlier save_file() could not write, and with
 *         ESTALE, writing nothing, if another program has made the file longer or shorter;
 *         #TDMS_ARGUMENT if a name or string added by the functions above cannot be read back (a
 *         slash in a group's name, strings of 4 GiB); #TDMS_CHANNEL_DATATYPE if a channel was
 *         deleted or replaced, and its values in the file have another type;
 *         #TDMS_CHANNEL_DATA_READ if that type cannot be looked up; #TDMS_FILE_HANDLE; #TDMS_MEMORY
 */
TDMS_API int tdms_save(void* file);

/**
 * Makes what was saved survive a loss of power, including a new file's entry in its folder. For the
 * entry, the folder must be readable and /proc mounted.
 * @return 0; #TDMS_WRITE with errno; after a failure of the device, with every later call, too;
 *         #TDMS_FILE_HANDLE; #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_sync(void* file);

/**
 * Closes a file without saving, frees everything in it and sets the variable to null.
 * @param[in,out] file the handle's variable
 * @return 0; #TDMS_WRITE with errno if something saved was not written, and no call has reported it
 *         yet: the file is closed all the same; #TDMS_ARGUMENT if `file` is null or refers to no
 *         open file: then nothing is closed
 */
TDMS_API int tdms_close(void** file);

/** @} */

/** @name Groups and channels
 *  @{ */

/**
 * Creates an empty group.
 * @param name any string without a slash
 * @param[out] group the new group's handle
 * @return 0; #TDMS_GROUP_REPEATED if the file has a group of that name; #TDMS_FILE_HANDLE;
 *         #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_create_group(void* file, const char* name, void** group);

/**
 * Creates a channel without a type or values. No channel is ever replaced.
 * @param name any string without a slash
 * @param[out] channel the new channel's handle
 * @return 0; #TDMS_CHANNEL_REPEATED if the group has a channel of that name; #TDMS_FILE_HANDLE;
 *         #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_create_channel(void* group, const char* name, void** channel);

/**
 * Finds a group by its name.
 * @return 0; #TDMS_GROUP_HANDLE if there is none; #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_find_group(void* file, const char* name, void** group);

/**
 * Finds a channel by its name.
 * @return 0; #TDMS_CHANNEL_HANDLE if there is none; #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_find_channel(void* group, const char* name, void** channel);

/**
 * The name of a group.
 * @param[out] name owned by the library, with a NUL after it; valid as long as the handle
 * @param[out] length in bytes, without that NUL; the name may contain zero bytes
 * @return 0; #TDMS_ARGUMENT
 */
TDMS_API int tdms_get_group_name(void* group, const char** name, uint64_t* length);

/** The name of a channel; see tdms_get_group_name(). */
TDMS_API int tdms_get_channel_name(void* channel, const char** name, uint64_t* length);

/** @} */

/** @name Properties: strings
 * @param[out] text the string, owned by the library, with a NUL after it; valid until the property
 *             is deleted, created again, saved by save_file() or changed by tdms_refresh(), or its
 *             object is destroyed
 * @param[out] length in bytes, without that NUL; the string may contain zero bytes
 * @return 0; #TDMS_DATATYPE if the property is not a string; #TDMS_FILE_PROPERTY_NAME,
 *         #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME if there is no property of that
 *         name; #TDMS_ARGUMENT
 * @{ */
TDMS_API int tdms_get_file_property_string(void* file, const char* name, const char** text,
                                           uint64_t* length);
TDMS_API int tdms_get_group_property_string(void* group, const char* name, const char** text,
                                            uint64_t* length);
TDMS_API int tdms_get_channel_property_string(void* channel, const char* name, const char** text,
                                              uint64_t* length);
/** @} */

/** @name Properties: times
 * @param[out] value nanoseconds since 1970-01-01T00:00:00 UTC
 * @return 0; #TDMS_DATATYPE if the property is not a timestamp; #TDMS_FILE_PROPERTY_NAME,
 *         #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME if there is no property of that
 *         name; #TDMS_ARGUMENT
 * @{ */
TDMS_API int tdms_get_file_property_nanoseconds(void* file, const char* name, int64_t* value);
TDMS_API int tdms_get_group_property_nanoseconds(void* group, const char* name, int64_t* value);
TDMS_API int tdms_get_channel_property_nanoseconds(void* channel, const char* name, int64_t* value);
/** @} */

/** @name Creating properties: times
 * As with the other types, a property that tdms_save() has written on this handle is replaced.
 * @param value nanoseconds since 1970-01-01T00:00:00 UTC
 * @return 0; #TDMS_FILE_PROPERTY_REPEATED, #TDMS_GROUP_PROPERTY_REPEATED or
 *         #TDMS_CHANNEL_PROPERTY_REPEATED if there is a property of that name; #TDMS_FILE_HANDLE;
 *         #TDMS_ARGUMENT; #TDMS_MEMORY
 * @{ */
TDMS_API int tdms_create_file_property_nanoseconds(void* file, const char* name, int64_t value);
TDMS_API int tdms_create_group_property_nanoseconds(void* group, const char* name, int64_t value);
TDMS_API int tdms_create_channel_property_nanoseconds(void* channel, const char* name,
                                                      int64_t value);
/** @} */

/**
 * The value of a property, with its type. The type is #TDMS_TYPE_VOID, and there is no value, if
 * the property in the file has a type that ::tdms_type does not list, or too few bytes.
 */
typedef struct tdms_value {
    int32_t type; /**< ::tdms_type */
    union {
        int64_t integer;     /**< of int8, int16, int32, int64 */
        uint64_t natural;    /**< of uint8, uint16, uint32, uint64 */
        double number;       /**< of float and double */
        bool boolean;        /**< of bool */
        int64_t nanoseconds; /**< of timestamp: since 1970-01-01T00:00:00 UTC */
        struct {
            const char* text; /**< the string; where the library returns it, a NUL follows */
            uint64_t length;  /**< in bytes, without that NUL; the string may contain zero bytes */
        } string;             /**< of string */
    } value;                  /**< the member that goes with the type */
} tdms_value;

/** @name Properties of any object and any type
 * For programs that handle every property alike, such as bindings. All three take the handle of a
 * file, a group or a channel. Names are passed with their length, because those in some files
 * contain zero bytes.
 * @param length the length of `name` in bytes, without a NUL; none is needed
 * @{ */

/**
 * Iterates over the properties of an object, in the byte order of their names:
 *
 *     for (name = NULL; tdms_next_property(object, &name, &length, &value) == 0 && name != NULL;)
 *
 * @param[in,out] name the name of the previous property, null to get the first; it becomes the name
 *                of the next one, owned by the library, with a NUL after it, or null after the last
 * @param[in,out] length the length of that name in bytes
 * @param[out] value the next property's value; untouched after the last. Names and strings stay
 *                valid like those of tdms_get_file_property_string()
 * @return 0; #TDMS_ARGUMENT
 */
TDMS_API int tdms_next_property(void* object, const char** name, uint64_t* length,
                                tdms_value* value);

/**
 * Reads a property.
 * @param[out] value its value
 * @return 0; #TDMS_FILE_PROPERTY_NAME, #TDMS_GROUP_PROPERTY_NAME or #TDMS_CHANNEL_PROPERTY_NAME if
 *         there is no property of that name; #TDMS_ARGUMENT
 */
TDMS_API int tdms_get_property(void* object, const char* name, uint64_t length, tdms_value* value);

/**
 * Creates a property, or replaces it. The file keeps the old value; after the next save, readers
 * find the new one, whatever its type.
 * @param value copied by the call. A number of type float is rounded to single precision
 * @return 0; #TDMS_ARGUMENT, also if the value does not fit its type, if the type has no values,
 *         and if a name or string has 4 GiB or more; #TDMS_FILE_HANDLE; #TDMS_MEMORY. On failure
 *         nothing changes
 */
TDMS_API int tdms_set_property(void* object, const char* name, uint64_t length,
                               const tdms_value* value);
/** @} */

/** @name Appending values
 * Adds values after those that a channel already has, in the file and in memory. They stay in
 * memory until tdms_save(). The first call fixes the channel's type, even with a count of 0. Any
 * number of values may be added at a time: many small calls cost little more than one large one.
 * @param count the number of values
 * @param values an array of `count` values, copied by the call; may be null if `count` is 0.
 *        Strings end at their NUL; those of one channel between two saves must be less than 4 GiB
 *        in total. Nanoseconds are values of the type timestamp. ::timestamp_fields are converted
 *        as their description says: an hour off during daylight saving
 * @return 0; #TDMS_CHANNEL_DATATYPE if the channel has another type; #TDMS_ARGUMENT, also for a
 *         null among the strings, and if they are too long in total; #TDMS_FILE_HANDLE;
 *         #TDMS_MEMORY; #TDMS_CHANNEL_DATA_READ if the channel was deleted and created again, and
 *         its type in the file cannot be looked up. On failure nothing changes
 * @{ */
TDMS_API int tdms_append_int8(void* channel, uint64_t count, const int8_t* values);
TDMS_API int tdms_append_int16(void* channel, uint64_t count, const int16_t* values);
TDMS_API int tdms_append_int32(void* channel, uint64_t count, const int32_t* values);
TDMS_API int tdms_append_int64(void* channel, uint64_t count, const int64_t* values);
TDMS_API int tdms_append_uint8(void* channel, uint64_t count, const uint8_t* values);
TDMS_API int tdms_append_uint16(void* channel, uint64_t count, const uint16_t* values);
TDMS_API int tdms_append_uint32(void* channel, uint64_t count, const uint32_t* values);
TDMS_API int tdms_append_uint64(void* channel, uint64_t count, const uint64_t* values);
TDMS_API int tdms_append_float(void* channel, uint64_t count, const float* values);
TDMS_API int tdms_append_double(void* channel, uint64_t count, const double* values);
TDMS_API int tdms_append_bool(void* channel, uint64_t count, const bool* values);
TDMS_API int tdms_append_timestamp(void* channel, uint64_t count, const timestamp_fields* values);
TDMS_API int tdms_append_string(void* channel, uint64_t count, const char* const* values);
TDMS_API int tdms_append_nanoseconds(void* channel, uint64_t count, const int64_t* values);
/** @} */

/** @name Reading values
 * Reads a range of the values that the file holds for a channel, of any group, on any handle that
 * has the file open. The first call for a file locates all its values and keeps an index of them;
 * after that, the cost of a call depends only on its range. Besides that index, and the metadata of
 * some segments while it is built, no call takes more than 1 MiB of memory.
 *
 * Some files written by save_file() state values that they do not hold. Those count as lost; the
 * others are numbered from 0 without gaps.
 * @param first the number of the first value
 * @param count how many values; 0 is allowed
 * @param[out] values an array of `count` values; may be null if `count` is 0
 * @return 0; #TDMS_RANGE if the range goes beyond the last value; #TDMS_CHANNEL_DATATYPE if the
 *         channel has another type, except that tdms_read_double() also converts all other numbers
 *         and bool; #TDMS_CHANNEL_DATA_READ if the device fails or the file was truncated before
 *         the end of the range: the handle stays valid; #TDMS_ARGUMENT; #TDMS_MEMORY. A channel
 *         without a type has 0 values of every type
 * @{ */
TDMS_API int tdms_read_int8(void* channel, uint64_t first, uint64_t count, int8_t* values);
TDMS_API int tdms_read_int16(void* channel, uint64_t first, uint64_t count, int16_t* values);
TDMS_API int tdms_read_int32(void* channel, uint64_t first, uint64_t count, int32_t* values);
TDMS_API int tdms_read_int64(void* channel, uint64_t first, uint64_t count, int64_t* values);
TDMS_API int tdms_read_uint8(void* channel, uint64_t first, uint64_t count, uint8_t* values);
TDMS_API int tdms_read_uint16(void* channel, uint64_t first, uint64_t count, uint16_t* values);
TDMS_API int tdms_read_uint32(void* channel, uint64_t first, uint64_t count, uint32_t* values);
TDMS_API int tdms_read_uint64(void* channel, uint64_t first, uint64_t count, uint64_t* values);
TDMS_API int tdms_read_float(void* channel, uint64_t first, uint64_t count, float* values);
TDMS_API int tdms_read_double(void* channel, uint64_t first, uint64_t count, double* values);
TDMS_API int tdms_read_bool(void* channel, uint64_t first, uint64_t count, bool* values);
TDMS_API int tdms_read_timestamp(void* channel, uint64_t first, uint64_t count,
                                 timestamp_fields* values);
TDMS_API int tdms_read_nanoseconds(void* channel, uint64_t first, uint64_t count, int64_t* values);
/** @} */

/**
 * How many values can be read, and how many are lost: stated but not stored in the file.
 * @param[out] count the number of values; may be null
 * @param[out] lost the number of lost values; may be null
 * @return 0; #TDMS_CHANNEL_DATA_READ; #TDMS_ARGUMENT; #TDMS_MEMORY
 */
TDMS_API int tdms_get_num_values(void* channel, uint64_t* count, uint64_t* lost);

/**
 * The size of a range of strings in bytes, with a NUL for each.
 * @param[out] size the size of the buffer that tdms_read_string() needs
 * @return as the readers
 */
TDMS_API int tdms_get_string_size(void* channel, uint64_t first, uint64_t count, uint64_t* size);

/**
 * Reads a range of strings into the caller's memory.
 * @param[out] buffer the strings one after the other, each with a NUL after it
 * @param size the size of `buffer` in bytes
 * @param[out] texts an array of `count` + 1 pointers into `buffer`: the start of each string, then
 *        the end, so that string i has texts[i + 1] - texts[i] - 1 bytes, zero bytes included
 * @return as the readers; #TDMS_PROPERTY_BUFFER if `size` is less than tdms_get_string_size()
 *         returns: then nothing is written
 */
TDMS_API int tdms_read_string(void* channel, uint64_t first, uint64_t count, char* buffer,
                              uint64_t size, const char** texts);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
