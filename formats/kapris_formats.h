/* kapris_formats.h - reading and writing files of hypergraphs: the C interface of the formats library.
 * SPDX-License-Identifier: MIT
 *
 * For programs in other languages. docs/formats.md describes the formats, all of which are read, compressed by gzip,
 * xz, bzip2 or zstd, too. The records are those that kapris_api.h takes: cells, nets, pins and parts count from 0 here.
 *
 * Calls never end the process and never print. They can run on several threads at once.
 */
#ifndef KAPRIS_FORMATS_H
#define KAPRIS_FORMATS_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KAPRIS_FORMATS_API __attribute__((visibility("default")))
#else
#define KAPRIS_FORMATS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum kapris_file_status {
  KAPRIS_FILE_OK = 0,
  /* The text is no hypergraph of that format; the message begins with "file:line:column: ". */
  KAPRIS_FILE_MALFORMED = 1,
  /* An argument does not fit the file or the format, or the format cannot hold what is to be written. */
  KAPRIS_FILE_ARGUMENT = 2,
  /* The system could not open, read or write the file. */
  KAPRIS_FILE_SYSTEM = 3,
  KAPRIS_FILE_OUT_OF_MEMORY = 4,
  /* A fault of the library. */
  KAPRIS_FILE_INTERNAL = 5
} kapris_file_status;

/* How a file is to be read. All zero means: everything as the name of the file says. */
typedef struct kapris_reading {
  /* One of hgr, mtx, patoh, cnf, wcnf, graph, yosys, bookshelf; NULL: by the end of the name, otherwise hgr. */
  const char *format;
  /* What becomes nets. Of mtx: row-net, column-net; of cnf and wcnf: primal, dual, literal; NULL: the first of them. */
  const char *model;
  /* 1 = of mtx and wcnf: everything weighs 1. */
  int unit_weights;
  /* Of yosys: the top module; NULL: the one that is marked so. */
  const char *module;
  /* Of yosys: the levels of modules that are dissolved into their cells, and whether that number counts; else all. */
  int depth;
  int has_depth;
} kapris_reading;

/* Names in the order of what they name, without zero bytes between or behind them. */
typedef struct kapris_names {
  /* [starts[count]]; any bytes, as a rule UTF-8. */
  const char *bytes;
  /* [count + 1] name i is bytes[starts[i]] .. bytes[starts[i + 1] - 1]. NULL: there are no names. */
  const size_t *starts;
} kapris_names;

/* A hypergraph as a file has it. */
typedef struct kapris_file {
  int ncells;
  int nnets;
  /* [nnets + 1] from 0; the pins of net j are pins[net_starts[j]] .. pins[net_starts[j + 1] - 1]. */
  const int *net_starts;
  /* [net_starts[nnets]] */
  const int *pins;
  /* [ncells] and [nnets] >= 0; NULL: all 1. */
  const int64_t *cell_weights;
  const int64_t *net_weights;
  kapris_names cell_names; /* [ncells] */
  kapris_names net_names;  /* [nnets] */
} kapris_file;

/* What may be lost when a file is written whose format cannot hold it: a sum of these. */
enum { KAPRIS_DROP_WEIGHTS = 1, KAPRIS_DROP_REPEATS = 2, KAPRIS_DROP_NAMES = 4 };

/* The version of the library, such as "0.2.1". Static text. */
KAPRIS_FORMATS_API const char *kapris_formats_version(void);

/* Reads the hypergraph in a file.
 *
 *   path      name of the file; "-" for standard input
 *   reading   how, or NULL: as the name says
 *   file      receives the hypergraph, which the caller releases by kapris_free_file; NULL if there is none
 *   message   [room] receives what is wrong, cut to the room and ended by a zero byte; empty if nothing is. Can be NULL
 *             if room is 0
 *
 * Returns the status; KAPRIS_FILE_ARGUMENT if path or file is NULL. */
KAPRIS_FORMATS_API kapris_file_status kapris_read_file(const char *path, const kapris_reading *reading,
                                                       kapris_file **file, char *message, size_t room);

/* Releases what kapris_read_file gave; NULL is allowed. */
KAPRIS_FORMATS_API void kapris_free_file(kapris_file *file);

/* Writes a hypergraph into a file: all of it or nothing, so that a failure leaves an older file as it was. It is
 * compressed if the name ends with .gz, .xz or .bz2. The record and its arrays are only read; they are checked.
 *
 *   path      name of the file; "-" for standard output
 *   format    one of hgr, mtx, patoh, graph, bookshelf; NULL: by the end of the name
 *   file      what to write
 *   drop      what may be lost, as KAPRIS_DROP_WEIGHTS; 0: anything that the format cannot hold is refused
 *   message   as above */
KAPRIS_FORMATS_API kapris_file_status kapris_write_file(const char *path, const char *format,
                                                        const kapris_file *file, int drop, char *message,
                                                        size_t room);

/* What xxhsum prints for the hypergraph as a file .hgr: 16 digits that depend on the numbers alone, not on the format
 * that they came in or the machine. digits: [17] receives them, ended by a zero byte. */
KAPRIS_FORMATS_API kapris_file_status kapris_hash_file(const kapris_file *file, char *digits, char *message,
                                                       size_t room);

/* The same of a part file: a line for each of so many parts. */
KAPRIS_FORMATS_API kapris_file_status kapris_hash_parts(const int *parts, int count, char *digits,
                                                        char *message, size_t room);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_FORMATS_H */
