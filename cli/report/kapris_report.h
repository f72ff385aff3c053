/* kapris_report.h - the page that shows a result: the C interface of the report library.
 * SPDX-License-Identifier: MIT
 */
#ifndef KAPRIS_REPORT_H
#define KAPRIS_REPORT_H

#include "formats/kapris_formats.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes one page of HTML that loads nothing else; docs/report.md shows one.
 *
 *   path      name of the file, written wholly or not at all
 *   json      the result: an object kapris-result-1 of docs/json.md
 *   file      the hypergraph, of which some pictures are
 *   part      [file->ncells] the partition of the result
 *   message   [room] as in kapris_formats.h
 *
 * Returns the status; KAPRIS_FILE_MALFORMED if json is no result, KAPRIS_FILE_ARGUMENT if it is not that of file. */
KAPRIS_FORMATS_API kapris_file_status kapris_write_report(const char *path, const char *json,
                                                          const kapris_file *file, const int *part,
                                                          char *message, size_t room);

#ifdef __cplusplus
}
#endif

#endif /* KAPRIS_REPORT_H */
