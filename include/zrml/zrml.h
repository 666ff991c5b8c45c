/* zrml: reads mass-spectrometry data, raw directories and reports. C99; docs/library.md shows how to use it.
 *
 * Text is UTF-8 and ends with a zero byte; names of files are the bytes that the system has for them. A text
 * that a record points to belongs to the source and stays until the source is closed. Positions count from 0;
 * `number` is the file's own number, which people see. Times are minutes, masses are m/z, wavelengths
 * nanometres. What a file does not hold is absent: a number is NaN, a text is empty, a position is -1, as
 * each function says.
 *
 * Every function that can fail gives a zrml_status, and zrml_message() says why in one line. A function that
 * fails writes only to `count`, and only where it says so. A null pointer where one is
 * needed, a position that is not there and a record whose `size` is too small give ZRML_WRONG_ARGUMENT. The
 * functions may be called in any order.
 *
 * A source is used by one thread at a time, and none of its functions may be called from within its progress
 * function. Sources are independent of each other: any number may be open, each in a thread of its own, also
 * several of one path.
 *
 * Arrays belong to the caller. Each function that fills arrays takes their `room`, a number of values, and
 * writes no further.
 *
 * Files that change while they are read, or that cannot be read to their end, give ZRML_UNREADABLE or
 * ZRML_DAMAGED; points that are gone count as lost. */
#ifndef ZRML_ZRML_H
#define ZRML_ZRML_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#ifdef ZRML_BUILD
#define ZRML_API __declspec(dllexport)
#else
#define ZRML_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define ZRML_API __attribute__((visibility("default")))
#else
#define ZRML_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the library, such as "1.2.3". Never fails; the text stays. */
ZRML_API const char* zrml_version(void);

/* ---- Sources ---- */

typedef enum zrml_status {
  ZRML_OK = 0,
  ZRML_WRONG_ARGUMENT = 2, /* also: nothing is at that position, too little room */
  ZRML_NOT_FOUND = 3,      /* there is no file or folder of that name */
  ZRML_NOT_RECOGNISED = 4, /* it is neither a raw directory nor a report */
  ZRML_UNREADABLE = 5,     /* the system refuses to read it */
  ZRML_DAMAGED = 7,        /* what is asked for is damaged or missing in its files */
  ZRML_NO_MEMORY = 9,
  ZRML_CANCELLED = 10 /* the progress function wanted it */
} zrml_status;

typedef struct zrml_source zrml_source;

/* Opens a raw directory, one of its data files (which chooses that function), or a report. `path` is UTF-8 on
 * Windows, else the system's own bytes. Sets `*source`, to null when that fails; zrml_open_message() says
 * why. Close it with zrml_close(). */
ZRML_API zrml_status zrml_open(const char* path, zrml_source** source);

/* Closes the files and frees all that belongs to the source; afterwards neither it nor its texts may be used.
 * Null is fine. */
ZRML_API void zrml_close(zrml_source* source);

/* Why the last call with this source that failed did so; empty when none has. One line without its end. Stays
 * until the next call with the source. Of null: that there is no source. */
ZRML_API const char* zrml_message(const zrml_source* source);

/* Why the last zrml_open() of this thread that failed did so; empty when none has. Stays until the thread's
 * next zrml_open(). */
ZRML_API const char* zrml_open_message(void);

/* As given to zrml_open(); empty of null. */
ZRML_API const char* zrml_path(const zrml_source* source);

typedef enum zrml_format { ZRML_NO_FORMAT = 0, ZRML_RAW_DIRECTORY = 1, ZRML_REPORT = 2 } zrml_format;

/* ZRML_NO_FORMAT of null. */
ZRML_API zrml_format zrml_format_of(const zrml_source* source);

/* Called now and then during long work, in the thread of the call: `done` of `all` steps are done. Ends the
 * work with ZRML_CANCELLED when it gives anything but 0. It must return: no exception and no jump out of it.
 */
typedef int (*zrml_progress)(void* context, size_t done, size_t all);

/* Sets the progress function of a source; null for none. Long work is what says so. */
ZRML_API zrml_status zrml_set_progress(zrml_source* source, zrml_progress progress, void* context);

/* ---- Records ----
 *
 * Each record has its size as first member: set it to sizeof the record before the call. The library fills as
 * much of a record as it knows and the caller has room for, so that a program goes on working with another
 * version of the library; members that an older library does not know become 0. */

/* ---- Samples ---- */

/* A raw directory has one sample, a report may have many, or none. */
ZRML_API zrml_status zrml_sample_count(zrml_source* source, int* count);

typedef struct zrml_sample {
  size_t size;
  int number;       /* from 1 */
  const char* name; /* never empty */
} zrml_sample;

ZRML_API zrml_status zrml_get_sample(zrml_source* source, int sample, zrml_sample* record);

/* ---- Functions ---- */

typedef enum zrml_kind {
  ZRML_KIND_MS = 0,
  ZRML_KIND_MSMS = 1,
  ZRML_KIND_ABSORBANCE = 2,
  ZRML_KIND_ION_MONITORING = 3,
  ZRML_KIND_OTHER = 4
} zrml_kind;

typedef enum zrml_monitoring {
  ZRML_MONITORING_NONE = 0,
  ZRML_MONITORING_IONS = 1,
  ZRML_MONITORING_REACTIONS = 2
} zrml_monitoring;

typedef enum zrml_scan_type {
  ZRML_SCAN_TYPE_NONE = 0,
  ZRML_SCAN_TYPE_PRECURSOR = 1,
  ZRML_SCAN_TYPE_PRODUCT = 2,
  ZRML_SCAN_TYPE_NEUTRAL_LOSS = 3,
  ZRML_SCAN_TYPE_NEUTRAL_GAIN = 4
} zrml_scan_type;

typedef enum zrml_polarity {
  ZRML_POLARITY_UNKNOWN = 0,
  ZRML_POLARITY_POSITIVE = 1,
  ZRML_POLARITY_NEGATIVE = 2
} zrml_polarity;

/* Functions of a sample that have scans in mass, then processed ones; without the absorbance function. */
ZRML_API zrml_status zrml_function_count(zrml_source* source, int sample, int* count);

typedef struct zrml_function {
  size_t size;
  int number;     /* from 1, as its files have it; of processed data, that of the function it goes back to */
  int process;    /* the process number of processed data; 0 of acquired data */
  int repeat;     /* 1, or 2 and more of further functions with the same process number */
  const char* id; /* how people name it: "4", "p2" of process 2, "p2.2" of the second one with that number */
  const char* file; /* of its data ("_FUNC004.DAT"); empty in a report */
  const char* name;
  zrml_kind kind;
  zrml_monitoring monitoring; /* what a function that records chosen ions only records */
  zrml_scan_type scan_type;
  zrml_polarity polarity;
  int ms_level;          /* 0 where it is not known */
  int is_lock_mass;      /* 1 or 0; a reference function, by its name */
  int has_mobility;      /* 1 or 0 */
  double mass_low;       /* set in the acquisition method; NaN where no file has it */
  double mass_high;      /* the same */
  const char* kind_name; /* "MS", "MS/MS", "absorbance", "ion monitoring", "reaction monitoring", "other" */
  const char* scan_type_name; /* "precursor", "product", "neutral loss", "neutral gain", or empty */
  const char* polarity_name;  /* "positive", "negative", or empty */
} zrml_function;

ZRML_API zrml_status zrml_get_function(zrml_source* source, int sample, int function, zrml_function* record);

/* A report's text of the function, unchanged; `*length` bytes without the zero byte at the end. Null and 0
 * where there is none or it is longer than 10,000,000 characters. Stays until the next call with the source.
 */
ZRML_API zrml_status zrml_function_text(zrml_source* source, int sample, int function, const char** text,
                                        size_t* length);

/* ---- Scans ---- */

ZRML_API zrml_status zrml_scan_count(zrml_source* source, int sample, int function, int* count);

typedef struct zrml_scan {
  size_t size;
  int number;                 /* from 1 */
  int is_centroided;          /* 1 or 0: points are peaks, or samples of a profile; -1: not known */
  double minutes;             /* when it begins; NaN where no file has it */
  double end_minutes;         /* the same, when it ends */
  size_t points;              /* at most so many: the room that zrml_read_points() needs */
  double total_intensity;     /* as stored beside the points, else NaN */
  double base_peak_intensity; /* as stored beside the points, else NaN */
  double precursor_mz;        /* NaN of functions without precursors and where no file has it */
  int is_precursor_of_method; /* 1: the mass set in the method, since no file has the scan's own */
  double scan_value; /* the scan's additional value (cone voltage and the like); NaN where there is none */
} zrml_scan;

/* Reads no points. */
ZRML_API zrml_status zrml_get_scan(zrml_source* source, int sample, int function, int scan,
                                   zrml_scan* record);

/* Arrays for one value of each scan: what zrml_scan has. A null array is not filled, and what takes time to
 * find is not looked for. Set members that are not used to null: `zrml_scan_table table = {.size = sizeof
 * table};` does. */
typedef struct zrml_scan_table {
  size_t size;
  int32_t* number;
  double* minutes;
  double* end_minutes;
  uint32_t* points;       /* at most so many; with `reads_points`, as many as were read */
  uint8_t* is_centroided; /* 1 or 0; 2 where it is not known */
  double* total_intensity;
  double* base_peak_mz; /* NaN, but with `reads_points` */
  double* base_peak_intensity;
  double* precursor_mz;
  double* scan_value;
  /* Not 0: the points of every scan are read for `points`, `base_peak_mz` and `base_peak_intensity`. The base
   * peak is the first of the most intense points; without points its m/z is NaN and its intensity 0, or NaN
   * where all points are lost. */
  int reads_points;
} zrml_scan_table;

/* Fills the arrays of `table` for `count` scans from position `first` on; each array has room for `count`.
 * Long work with `reads_points`, else as quick as the index is read. When it fails part of the arrays may be
 * filled. Arrays of megabytes are recommended to the system for large pages, which changes nothing else. */
ZRML_API zrml_status zrml_read_scan_table(zrml_source* source, int sample, int function, int first, int count,
                                          const zrml_scan_table* table);

/* The points of a scan, in ascending m/z, only those that the file holds. `mz` and `intensities` have room
 * for `room` values; zrml_scan.points are always enough, and with less the call may give ZRML_WRONG_ARGUMENT.
 * Sets `*count` to how many points there are and, unless `lost` is null, `*lost` to how many more the index
 * declares that the file does not hold. When it fails the arrays may hold anything. */
ZRML_API zrml_status zrml_read_points(zrml_source* source, int sample, int function, int scan, double* mz,
                                      double* intensities, size_t room, size_t* count, size_t* lost);

/* The points of `scans` scans from position `first` on, for loops over small ones, one behind the other:
 * those of scan `first` + i end before `ends[i]` and begin where those of the scan before it end, the first
 * ones at 0. `ends`, and `lost` unless it is null, have room for `scans` values; the sum of zrml_scan.points
 * is always room enough in `mz` and `intensities`. Ends early before a scan that does not fit or cannot be
 * read: sets
 * `*count` to how many scans were read. Fails, as zrml_read_points() does, where that is the first one. */
ZRML_API zrml_status zrml_read_points_of_scans(zrml_source* source, int sample, int function, int first,
                                               int scans, double* mz, double* intensities, size_t room,
                                               size_t* ends, size_t* lost, int* count);

/* The lower-level scan that a scan comes from: the nearest one that is not later. Sets
 * `*precursor_function` and `*precursor_scan` to its positions, both to -1 when there is none. */
ZRML_API zrml_status zrml_find_precursor(zrml_source* source, int sample, int function, int scan,
                                         int* precursor_function, int* precursor_scan);

/* ---- Chromatograms ----
 *
 * One value for each scan of the function: `room` is zrml_scan_count() or more. */

/* When each scan was taken; NaN where no file has it. */
ZRML_API zrml_status zrml_read_minutes(zrml_source* source, int sample, int function, double* minutes,
                                       size_t room);

/* As stored beside the points; NaN where no file has it. */
ZRML_API zrml_status zrml_read_total_ions(zrml_source* source, int sample, int function, double* intensities,
                                          size_t room);

/* The largest intensity: as stored in a report, else of the points, which is long work; NaN where no file
 * has it. */
ZRML_API zrml_status zrml_read_base_peaks(zrml_source* source, int sample, int function, double* intensities,
                                          size_t room);

typedef struct zrml_range {
  double low;
  double high;
} zrml_range;

typedef enum zrml_within { ZRML_SUM = 0, ZRML_LARGEST = 1 } zrml_within;

/* The sum or the largest (`within`, a zrml_within) of the intensities from `low` to `high`, both included,
 * for `range_count` ranges in one pass over the scans: long work. The values of the first range come first:
 * those of range r and scan s are in `intensities[r * scans + s]`, so `room` is `range_count` times the
 * number of scans or more. 0 of a scan without points in the range, NaN of one whose points are all lost.
 * ZRML_WRONG_ARGUMENT for an end that is NaN. */
ZRML_API zrml_status zrml_read_mass_ranges(zrml_source* source, int sample, int function,
                                           const zrml_range* ranges, size_t range_count, int within,
                                           double* intensities, size_t room);

/* ---- Centroids ---- */

typedef struct zrml_centroid_options {
  size_t size;
  int is_area;                /* not 0: the sums of the samples of peaks instead of their heights */
  double min_signal_to_noise; /* of the peaks that are wanted; 0 for the usual 2.5 */
} zrml_centroid_options;

/* The peaks of a profile of `points` samples: of a scan, drift bin or sum whose zrml_scan.is_centroided is 0,
 * of a function that is neither of ion monitoring nor of absorbance. They are not the instrument's own
 * centroids; docs/centroids.md has the method. `options` may be null. `mz` ascends. There are never more
 * peaks than samples, so `room` for `points` is enough; sets `*count`. Needs no source and may be called in
 * any thread. ZRML_WRONG_ARGUMENT for null arrays, too little room (with `*count` set), and a signal to noise
 * that is negative or NaN. */
ZRML_API zrml_status zrml_find_centroids(const double* mz, const double* intensities, size_t points,
                                         const zrml_centroid_options* options, double* centroid_mz,
                                         double* centroid_intensities, size_t room, size_t* count);

/* ---- Arrays of unknown length ----
 *
 * How much the following functions give shows only when it is read. Each sets `*count` to how many values
 * there are. With `room` 0 (then the arrays may be null) it writes nothing else: what was read is kept, and
 * the same call with room for `*count` values takes it from there, unless there was another call of this
 * section in between. Room that is not 0 and too small gives ZRML_WRONG_ARGUMENT, with `*count` set. */

/* The scans from position `first` up to, not including, `end`, added up in their order. Peaks of one m/z
 * become one; with a `width` above 0, in m/z, or in parts per million when `is_ppm` is not 0, peaks within
 * half of it on either side of a stronger one become part of that. Profiles are added on one grid, that of
 * the first one unless another has more than twice as many points; `width` means nothing to them. Absorbance
 * spectra of a report are added wavelength by wavelength. Scans of another kind (zrml_scan.is_centroided) or
 * with other wavelengths than the first one with points are left out, and so are profiles of one or two
 * points, which have no grid, unless there is nothing else, scans with a number beyond 1e100 or NaN, and
 * scans whose points are all lost. Long work. ZRML_WRONG_ARGUMENT when there is no scan and for a width that
 * is negative or NaN. */
ZRML_API zrml_status zrml_read_sum(zrml_source* source, int sample, int function, int first, int end,
                                   double width, int is_ppm, double* mz, double* intensities, size_t room,
                                   size_t* count);

typedef struct zrml_sum_options {
  size_t size;
  double width;            /* as in zrml_read_sum() */
  int is_ppm;              /* the same */
  int is_mean;             /* not 0: divided by the number of scans that were added */
  const int* background;   /* positions of scans; may be null when there are none */
  size_t background_count; /* how many; 0 for no background */
} zrml_sum_options;

/* Of how many scans a sum is. */
typedef struct zrml_sum {
  size_t size;
  int is_centroided;       /* 1 or 0, as in zrml_scan */
  int added;               /* scans; one without points, which measured nothing, is one of them */
  int left_out;            /* scans */
  int background_added;    /* the same of the background */
  int background_left_out; /* the same */
  size_t lost;             /* points of the scans that the index declares and the file does not hold */
} zrml_sum;

/* The same of any scans: those at the `scan_count` positions in `scans`, each of them once, in the order of
 * the function. The mean of the scans of the background is taken off as often as scans were added, before
 * the sum is divided; intensities may become negative. Of profiles it is taken off point by point, on the
 * grid that they have together, each peak of it off the nearest one within half the width around it; without
 * one it stays, negative. `options` and `sum` may be null; `sum` is filled when the arrays are.
 * ZRML_WRONG_ARGUMENT also when the background is of another kind or has no scan that can be added. */
ZRML_API zrml_status zrml_read_sum_of_scans(zrml_source* source, int sample, int function, const int* scans,
                                            size_t scan_count, const zrml_sum_options* options, double* mz,
                                            double* intensities, size_t room, size_t* count, zrml_sum* sum);

/* Drift bins of each scan; 0 without mobility data or where the maker's library is not installed. */
ZRML_API zrml_status zrml_drift_bin_count(zrml_source* source, int sample, int function, int* count);

/* The points of one drift bin of a scan, in ascending m/z. */
ZRML_API zrml_status zrml_read_drift_bin(zrml_source* source, int sample, int function, int scan, int bin,
                                         double* mz, double* intensities, size_t room, size_t* count);

/* In place of a function's position: the sample itself. */
#define ZRML_OF_SAMPLE (-1)

/* Traces of the sample (ZRML_OF_SAMPLE), or of a function: a report's functions have their own. */
ZRML_API zrml_status zrml_trace_count(zrml_source* source, int sample, int function, int* count);

typedef struct zrml_trace {
  size_t size;
  int number; /* from 1 */
  const char* name;
} zrml_trace;

ZRML_API zrml_status zrml_get_trace(zrml_source* source, int sample, int function, int trace,
                                    zrml_trace* record);

/* The points of a trace. `times` are as stored: no file has their unit. */
ZRML_API zrml_status zrml_read_trace(zrml_source* source, int sample, int function, int trace, double* times,
                                     double* intensities, size_t room, size_t* count);

/* ---- Absorbance spectra of a raw directory ---- */

/* Sets `*count` to -1 where the sample has no absorbance function. */
ZRML_API zrml_status zrml_absorbance_count(zrml_source* source, int sample, int* count);

/* The absorbance function; ZRML_WRONG_ARGUMENT where there is none. */
ZRML_API zrml_status zrml_get_absorbance_function(zrml_source* source, int sample, zrml_function* record);

/* When each absorbance spectrum was taken; `room` is zrml_absorbance_count() or more. */
ZRML_API zrml_status zrml_read_absorbance_minutes(zrml_source* source, int sample, double* minutes,
                                                  size_t room);

/* One absorbance spectrum, an array of unknown length as above. `lost`, unless it is null, is as in
 * zrml_read_points(). */
ZRML_API zrml_status zrml_read_absorbance(zrml_source* source, int sample, int scan, double* wavelengths,
                                          double* values, size_t room, size_t* count, size_t* lost);

/* All absorbance spectra at once, where all have the same wavelengths: `columns` of them, the length of any
 * one spectrum. The value of scan s at wavelength w is in `values[s * columns + w]`, so `values` has room for
 * zrml_absorbance_count() times `columns`. Sets `*is_matrix` to 1, or to 0 where a spectrum has other
 * wavelengths, or not `columns` of them: then the arrays may hold anything. Long work. */
ZRML_API zrml_status zrml_read_absorbance_matrix(zrml_source* source, int sample, size_t columns,
                                                 double* wavelengths, double* values, int* is_matrix);

/* ---- Metadata ---- */

/* Items of the sample (ZRML_OF_SAMPLE), or the same with the values that a function has of its own. */
ZRML_API zrml_status zrml_metadata_count(zrml_source* source, int sample, int function, int* count);

typedef struct zrml_metadata {
  size_t size;
  const char* key;   /* each is there once */
  const char* value; /* null where no file has it */
} zrml_metadata;

ZRML_API zrml_status zrml_get_metadata(zrml_source* source, int sample, int function, int item,
                                       zrml_metadata* record);

/* ---- Findings ---- */

/* What is known of damage. The first call looks at the structure of every file, and reads a report to its
 * end; what was found is kept. */
ZRML_API zrml_status zrml_finding_count(zrml_source* source, int* count);

typedef enum zrml_subject {
  ZRML_ABOUT_SOURCE = 0,
  ZRML_ABOUT_FUNCTION = 1,
  ZRML_ABOUT_ABSORBANCE = 2,
  ZRML_ABOUT_TRACES = 3,
  ZRML_ABOUT_SAMPLE = 4
} zrml_subject;

typedef struct zrml_finding {
  size_t size;
  const char* code; /* its name, "data-cut"; later versions may have more */
  const char*
      severity; /* "lost": something measured is gone; "suspect": it may not be what was measured; "note" */
  const char* file;    /* its name without folder; empty when it is about the whole */
  const char* message; /* what the problem is, to be shown after the name of the file */
  zrml_subject subject;
  int sample;           /* number of the sample of a report; 0 elsewhere */
  const char* function; /* as in zrml_function.id; empty when it is not about a function */
  uint64_t count;       /* how many scans, points, traces */
  uint64_t first;       /* number of the first of them, from 1; 0 where nothing is numbered */
} zrml_finding;

ZRML_API zrml_status zrml_get_finding(zrml_source* source, int finding, zrml_finding* record);

#ifdef __cplusplus
}
#endif

#endif
