/* SPDX-License-Identifier: MIT */
/*
 * libtrelvane: scans of 3D scanners for programs. Reads and writes what Trelvane does: surfaces,
 * profiles, point clouds (.sur, .srf, .pro, .pcd) and recordings of them (.rep, .rec, .ovrec).
 *
 * Handles are opaque. Each call may be given NULL for them, for other pointers and for text: that
 * is TRELVANE_ERROR_ARGUMENT, never a crash. A handle serves one thread at a time, separate handles
 * serve separate threads at the same time, and a scan any number of them, also while the file that
 * it comes from is read or closed. There is no global state. Nothing is printed and no log is kept.
 *
 * Paths and all other text are UTF-8 and end with a zero. Lengths are in mm.
 *
 * A struct whose first field is `size` may grow in later versions. Whoever passes one clears it and
 * sets `size` to its sizeof; fields that are 0 have their defaults.
 */
#ifndef TRELVANE_H
#define TRELVANE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32) && defined(TRELVANE_BUILD)
#define TRELVANE_API __declspec(dllexport)
#elif defined(_WIN32)
#define TRELVANE_API __declspec(dllimport)
#elif defined(__GNUC__)
#define TRELVANE_API __attribute__((visibility("default")))
#else
#define TRELVANE_API
#endif

/* Version ----------------------------------------------------------------------------------- */

/* Of this header: two digits each for minor, patch and build behind the major number. */
#define TRELVANE_VERSION "1.0.0.4"
#define TRELVANE_VERSION_NUMBER 1000004

/* Of the library that is loaded. */
TRELVANE_API const char* trelvane_version(void);
TRELVANE_API uint32_t trelvane_version_number(void);

/* Errors ------------------------------------------------------------------------------------ */

/* Later versions may add values. */
typedef enum trelvane_status {
  TRELVANE_OK = 0,
  TRELVANE_ERROR_ARGUMENT = 1,  /* NULL, an index or size out of range, an option that cannot be */
  TRELVANE_ERROR_MEMORY = 2,    /* the memory is not there */
  TRELVANE_ERROR_NOT_FOUND = 3, /* no such file, or nothing in that place of it */
  TRELVANE_ERROR_READ = 4,      /* a file cannot be opened or read, or changes meanwhile */
  TRELVANE_ERROR_CONTENT = 5,   /* a file is damaged, or not what it must be */
  TRELVANE_ERROR_WRITE = 6,     /* an output cannot be written */
  TRELVANE_ERROR_CLOSED = 7,    /* a writer that was closed, or failed before */
  TRELVANE_ERROR_INTERNAL = 99  /* a fault of this library, or an exception out of a callback */
} trelvane_status;

/* What went wrong. The last parameter of a call that can fail is the caller's memory for it, or
 * NULL; it is filled in either case, after success with zeros. */
typedef struct trelvane_error {
  int32_t status; /* a trelvane_status, the one that the call returns */
  int32_t code;   /* Trelvane's own, as in its log, such as -997; 0 where it has none */
  char text[512]; /* one sentence; a longer one is cut between two characters */
} trelvane_error;

/* Messages ---------------------------------------------------------------------------------- */

typedef enum trelvane_message_kind {
  TRELVANE_MESSAGE_INFO = 1,
  TRELVANE_MESSAGE_WARNING = 2,
  TRELVANE_MESSAGE_FILE = 3 /* the text is the path of a file that trelvane_convert has written */
} trelvane_message_kind;

/* Takes what a call says beside its result, in the thread of that call and before it returns. The
 * text is valid during the function, which may use other handles and must not throw. */
typedef void (*trelvane_message_function)(void* context, trelvane_message_kind kind,
                                          const char* text);

/* Files ------------------------------------------------------------------------------------- */

typedef struct trelvane_file trelvane_file;
typedef struct trelvane_scan trelvane_scan;
typedef struct trelvane_writer trelvane_writer;

/* How a point cloud (.pcd) is put into a grid, as by Trelvane's options of these names. */
typedef struct trelvane_cloud_options {
  size_t size;
  uint32_t width;  /* points in a row; 0: the file's own */
  uint32_t height; /* rows; 0: the file's own */
  int32_t swap_xz; /* 1: x and z change places before all else */
  int32_t has_invalid_point;
  double invalid_point[3]; /* a point with one of these coordinates is invalid */
  double zoom;             /* more than 0: multiplies all coordinates */
} trelvane_cloud_options;

typedef struct trelvane_open_options {
  size_t size;
  /* 1: a recording is opened by the heads of its records alone, in a time that grows with the
   * number of its scans, not with their size. No checksum is verified then, neither now nor later,
   * and no scan is looked at before it is asked for, so that damage of one is told only then or,
   * where only numbers have changed, never. Other files are not affected. */
  int32_t unchecked;
  const trelvane_cloud_options* cloud;  /* or NULL; is copied */
  trelvane_message_function on_message; /* or NULL; called while scans of the file are read */
  void* context;                        /* for on_message */
} trelvane_open_options;

typedef enum trelvane_file_kind {
  TRELVANE_FILE_SRF = 1,
  TRELVANE_FILE_SUR = 2,
  TRELVANE_FILE_PRO = 3,
  TRELVANE_FILE_PCD = 4,
  TRELVANE_FILE_REC = 5,
  TRELVANE_FILE_REP = 6,
  TRELVANE_FILE_OVREC = 7,
  TRELVANE_FILE_FOLDER = 8 /* of .sur files, one for each frame and source */
} trelvane_file_kind;

typedef enum trelvane_layout {
  TRELVANE_LAYOUT_NONE = 0, /* no recording */
  TRELVANE_LAYOUT_CLASSIC = 1,
  TRELVANE_LAYOUT_SEGMENTED = 2
} trelvane_layout;

typedef struct trelvane_file_info {
  size_t size;
  int32_t kind;     /* a trelvane_file_kind */
  int32_t layout;   /* a trelvane_layout */
  uint64_t frames;  /* at least 1 */
  uint64_t sources; /* at least 1 */
} trelvane_file_info;

typedef enum trelvane_source_type {
  TRELVANE_UNIFORM_PROFILE = 12,
  TRELVANE_PROFILE_POINT_CLOUD = 13,
  TRELVANE_UNIFORM_SURFACE = 14,
  TRELVANE_SURFACE_POINT_CLOUD = 15
} trelvane_source_type;

typedef struct trelvane_source_info {
  size_t size;
  const char* name;
  const char* display_name;
  int32_t type;    /* a trelvane_source_type */
  int32_t arrayed; /* 1: each frame holds any number of scans of this source, its items */
} trelvane_source_info;

/* Opens a file, whose extension tells its kind, or a folder. A file of a single scan is a recording
 * of one frame and one source. A recording is read and verified from beginning to end, unless the
 * options (or NULL) say otherwise; other files are read when their scan is asked for. The file
 * stays open until trelvane_file_close, which closes it at once; NULL is allowed there. */
TRELVANE_API trelvane_status trelvane_open(const char* path, const trelvane_open_options* options,
                                           trelvane_file** file, trelvane_error* error);
TRELVANE_API void trelvane_file_close(trelvane_file* file);

/* Fill a struct whose `size` the caller has set. The names of a source are valid until the file is
 * closed; they are shown as the file has them, which may be no UTF-8 in a file from anywhere. */
TRELVANE_API trelvane_status trelvane_file_get_info(const trelvane_file* file,
                                                    trelvane_file_info* info,
                                                    trelvane_error* error);
TRELVANE_API trelvane_status trelvane_file_get_source(const trelvane_file* file, uint64_t source,
                                                      trelvane_source_info* info,
                                                      trelvane_error* error);

/* Tells how many scans one frame has of a source: 1, or 0 where a recording has none there; of an
 * arrayed source the number of items. */
TRELVANE_API trelvane_status trelvane_file_count_items(trelvane_file* file, uint64_t frame,
                                                       uint64_t source, uint64_t* count,
                                                       trelvane_error* error);

/* Reads one scan into memory. `item` is 0 for a source that is not arrayed. The scan is the
 * caller's, for trelvane_scan_free, and does not need the file any more. TRELVANE_ERROR_NOT_FOUND
 * where the recording has no scan in that place. */
TRELVANE_API trelvane_status trelvane_file_read_scan(trelvane_file* file, uint64_t frame,
                                                     uint64_t source, uint64_t item,
                                                     trelvane_scan** scan, trelvane_error* error);

/* Scans ------------------------------------------------------------------------------------- */

typedef enum trelvane_scan_kind {
  TRELVANE_SCAN_SURFACE = 1,      /* a grid of heights z */
  TRELVANE_SCAN_CLOUD = 2,        /* a grid of points x, y, z */
  TRELVANE_SCAN_PROFILE = 3,      /* a row of heights z */
  TRELVANE_SCAN_POINT_PROFILE = 4 /* a row of points x, z */
} trelvane_scan_kind;

/* In a raw coordinate: nothing was seen there. One such coordinate makes its point invalid. */
#define TRELVANE_INVALID (-32768)

/* When and where a scan was taken. */
typedef struct trelvane_stamp {
  uint64_t frame;
  uint64_t time;
  int64_t encoder;
  int64_t z_encoder;
  uint64_t inputs; /* 16 digital inputs in the low 16 bits */
  uint64_t reserved[3];
} trelvane_stamp;

typedef struct trelvane_scan_info {
  size_t size;
  int32_t kind;      /* a trelvane_scan_kind */
  uint32_t width;    /* points in a row, along x */
  uint32_t length;   /* rows, along y; 1 for a profile */
  int32_t resampled; /* 1: the points were put into a regular grid; of profiles always 0 */
  int32_t has_box;   /* a scan file has none: trelvane_scan_find_box */
  int32_t has_stamp; /* a scan file has none */
  /* The raw value v of an axis x, y, z stands for v * scale + offset mm. Where points do not tell
   * their x or y, the raw value is the column or the row. */
  double scale[3];
  double offset[3];
  double box_center[3]; /* of the valid points, mm */
  double box_size[3];
  trelvane_stamp stamp;
} trelvane_scan_info;

/* Makes a scan of the caller's arrays, which are copied. `points` has 1, 3, 1 or 2 values a point,
 * in the order of the kinds, row by row; `intensities`, or NULL, one value a point. Both counts are
 * of values, and exactly those of width x length points, of which there is at least one. A
 * recording gets the box that is given or else is found, and the stamp that is given or else 0. */
TRELVANE_API trelvane_status trelvane_scan_create(const trelvane_scan_info* info,
                                                  const int16_t* points, size_t point_values,
                                                  const uint8_t* intensities,
                                                  size_t intensity_values, trelvane_scan** scan,
                                                  trelvane_error* error);
/* NULL is allowed. */
TRELVANE_API void trelvane_scan_free(trelvane_scan* scan);

/* Fills a struct whose `size` the caller has set. */
TRELVANE_API trelvane_status trelvane_scan_get_info(const trelvane_scan* scan,
                                                    trelvane_scan_info* info,
                                                    trelvane_error* error);

/* The raw points and the intensities, laid out as for trelvane_scan_create, without a copy. They
 * are valid until the scan is freed. `count`, or NULL, gets the number of values. NULL and 0 for no
 * scan, no points or no intensities. */
TRELVANE_API const int16_t* trelvane_scan_points(const trelvane_scan* scan, size_t* count);
TRELVANE_API const uint8_t* trelvane_scan_intensities(const trelvane_scan* scan, size_t* count);

/* Fill the caller's memory, which has room for `capacity` values, with the z of all width x length
 * points in mm, row by row; NaN where a point is invalid. A double is the value of Trelvane's CSV
 * files and pictures before it becomes text; a float is that double, rounded. Too little room is
 * TRELVANE_ERROR_ARGUMENT, and nothing is written. */
TRELVANE_API trelvane_status trelvane_scan_heights_f32(const trelvane_scan* scan, float* heights,
                                                       size_t capacity, trelvane_error* error);
TRELVANE_API trelvane_status trelvane_scan_heights_f64(const trelvane_scan* scan, double* heights,
                                                       size_t capacity, trelvane_error* error);

/* Finds centre and size (3 values each, mm) of the valid points, as a recording tells them.
 * TRELVANE_ERROR_NOT_FOUND when no point is valid. */
TRELVANE_API trelvane_status trelvane_scan_find_box(const trelvane_scan* scan, double* center,
                                                    double* extent, trelvane_error* error);

/* Writes a .sur or .srf (of a surface), .pro (of a profile) or .pcd (of a surface or cloud) by the
 * extension of the path. The file is there whole, or as it was before. */
TRELVANE_API trelvane_status trelvane_scan_save(const trelvane_scan* scan, const char* path,
                                                trelvane_error* error);

/* Recordings, frame by frame ---------------------------------------------------------------- */

typedef struct trelvane_writer_options {
  size_t size;
  /* The folder with config.json, jobs/config.json and jobs/live/_live.ovjob that go into an
   * archive; NULL for "config" in the working directory. Is copied. */
  const char* config;
} trelvane_writer_options;

/* Begins a recording (.rep, .rec) or an archive (.ovrec) with these sources, all of whose structs
 * have one size. It appears under its name when trelvane_writer_close succeeds, and replaces an
 * earlier file then; what was added is not kept in memory. trelvane_writer_free ends the handle in
 * any state, and drops what was not closed; NULL is allowed.
 *
 * After a call that failed, but for TRELVANE_ERROR_ARGUMENT, only trelvane_writer_free is left. */
TRELVANE_API trelvane_status trelvane_writer_open(const char* path,
                                                  const trelvane_source_info* sources,
                                                  size_t source_count,
                                                  const trelvane_writer_options* options,
                                                  trelvane_writer** writer, trelvane_error* error);
/* Begins a frame. The one before must be complete. */
TRELVANE_API trelvane_status trelvane_writer_begin_frame(trelvane_writer* writer,
                                                         trelvane_error* error);
/* Add the scans of the next source of the frame: one, or of an arrayed source any number. Their
 * kind must be that of the source's type. */
TRELVANE_API trelvane_status trelvane_writer_add(trelvane_writer* writer, const trelvane_scan* scan,
                                                 trelvane_error* error);
TRELVANE_API trelvane_status trelvane_writer_add_items(trelvane_writer* writer,
                                                       const trelvane_scan* const* scans,
                                                       size_t count, trelvane_error* error);
/* Completes the recording, which has at least one frame, and puts it in its place. */
TRELVANE_API trelvane_status trelvane_writer_close(trelvane_writer* writer, trelvane_error* error);
TRELVANE_API void trelvane_writer_free(trelvane_writer* writer);

/* Conversions ------------------------------------------------------------------------------- */

typedef struct trelvane_convert_options {
  size_t size;
  const trelvane_cloud_options* cloud;  /* or NULL; an error unless the input is a .pcd */
  uint32_t frame;                       /* of a recording */
  int32_t all_frames;                   /* 1: all frames of a recording */
  const char* config;                   /* as for trelvane_writer_options */
  trelvane_message_function on_message; /* or NULL */
  void* context;                        /* for on_message */
} trelvane_convert_options;

/* Does what one run of Trelvane does: converts a file or a folder. `to` is NULL for an archive
 * beside the input. Each file that was written is told by TRELVANE_MESSAGE_FILE, also when the call
 * fails after it; it is there whole, or as it was before. */
TRELVANE_API trelvane_status trelvane_convert(const char* from, const char* to,
                                              const trelvane_convert_options* options,
                                              trelvane_error* error);

#ifdef __cplusplus
}
#endif

#endif
