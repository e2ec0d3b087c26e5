#pragma once

#include <string>
#include <vector>

#include "tdms.h"

// The codec under the plain names by which programs may link to it. The library itself uses none of
// them. `little` is the byte order of the encoded value. Decoders trust that there are enough bytes
// at p; encoders return exactly the encoded bytes.

TDMS_API signed char read_int8(const unsigned char* p);
TDMS_API unsigned char read_uint8(const unsigned char* p);
TDMS_API short read_int16(const unsigned char* p, bool little);
TDMS_API unsigned short read_uint16(const unsigned char* p, bool little);
TDMS_API int read_int32(const unsigned char* p, bool little);
TDMS_API unsigned int read_uint32(const unsigned char* p, bool little);
TDMS_API long read_int64(const unsigned char* p, bool little);
TDMS_API unsigned long read_uint64(const unsigned char* p, bool little);
TDMS_API float read_float(const unsigned char* p, bool little);
TDMS_API double read_double(const unsigned char* p, bool little);

/// True for every byte but 0.
TDMS_API bool read_bool(const unsigned char* p);

/// The bytes of a length-prefixed string; zero bytes among them are kept.
TDMS_API std::string read_string(const unsigned char* p, bool little);

/// The first byte of a length-prefixed string, and the string's length.
TDMS_API char read_char(const unsigned char* p, unsigned long& length, bool little);

TDMS_API std::vector<unsigned char> read_data(const unsigned char* p, unsigned int size);
TDMS_API std::basic_string<unsigned char> read_string_data(const unsigned char* p,
                                                           unsigned int size);

/// A length-prefixed string with its prefix, which is little-endian in every file.
TDMS_API std::vector<unsigned char> read_string_data(const unsigned char* p);

TDMS_API std::basic_string<unsigned char> write_int8(signed char v);
TDMS_API std::basic_string<unsigned char> write_uint8(unsigned char v);
TDMS_API std::basic_string<unsigned char> write_bool(bool v);
TDMS_API std::basic_string<unsigned char> write_int16(short v, bool little);
TDMS_API std::basic_string<unsigned char> write_uint16(unsigned short v, bool little);
TDMS_API std::basic_string<unsigned char> write_int32(int v, bool little);
TDMS_API std::basic_string<unsigned char> write_uint32(unsigned int v, bool little);
TDMS_API std::basic_string<unsigned char> write_int64(long v, bool little);
TDMS_API std::basic_string<unsigned char> write_uint64(unsigned long v, bool little);
TDMS_API std::basic_string<unsigned char> write_float(float v, bool little);
TDMS_API std::basic_string<unsigned char> write_double(double v, bool little);

/// A length-prefixed string; the length is cut to 32 bits.
TDMS_API std::basic_string<unsigned char> write_string(const std::string& s, bool little);

/// The block of a string channel: end offsets (wrapping at 2^32), then the bytes.
TDMS_API std::basic_string<unsigned char> write_string_data(const std::vector<std::string>& strings,
                                                            bool little);

/// The 16 bytes of a calendar time, which is taken as standard time.
TDMS_API std::basic_string<unsigned char> write_timestamp(int year, int month, int day, int hour,
                                                          int minute, int second, int microsecond,
                                                          bool little);

/// The calendar time of the 16 bytes at p, as localtime() shows it. Safe in several threads at
/// once.
TDMS_API timestamp_fields read_timestamp(const unsigned char* p, bool little);

/// A lead-in for a segment with this many bytes of metadata and of raw data.
TDMS_API std::basic_string<unsigned char> write_leadIn(unsigned long metadata_length,
                                                       unsigned long raw_length);

/// Checks one lead-in, 28 bytes as they are in the file, and returns how many bytes of metadata and
/// of raw data follow it. Both lengths are untouched on failure; neither is validated, and a raw
/// data offset after the next segment wraps.
/// @return 0, or of several faults the first: TDMS_FILE_TAG, TDMS_FILE_TOC, TDMS_FILE_VERSION
TDMS_API int read_leadIn(unsigned char* lead_in, unsigned long& metadata_length,
                         unsigned long& raw_length);
