/* kapris_report.h - what shows a result, an order and a page: the C interface of the report library.
 * SPDX-License-Identifier: MIT
 */
#ifndef KAPRIS_REPORT_H
#define KAPRIS_REPORT_H

#include "formats/kapris_formats.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Orders cells and nets by a partition: of a matrix whose columns are cells, to a block for each part and a border.
 * Cells and nets of a part stand together, part after part, in the order that they had; then come the nets in more than
 * one part, by the first and then the last part that they are in. Nets without pins belong to the last part.
 *
 *   file         the hypergraph
 *   part         [file->ncells] 0 .. parts-1
 *   parts        number of parts, >= 1
 *   nets         [file->nnets] receives the numbers of the nets in the new order
 *   cells        [file->ncells] receives those of the cells
 *   net_blocks   [parts + 2] receives where in nets the nets of each part begin, and those in more than one; the last
 *                is their number
 *   cell_blocks  [parts + 1] receives where in cells the cells of each part begin; the last is their number
 *   message      [room] as in kapris_formats.h
 *
 * Returns the status; KAPRIS_FILE_ARGUMENT if a part or the hypergraph is wrong: nothing is then written. */
KAPRIS_FORMATS_API kapris_file_status kapris_order(const kapris_file *file, const int *part, int parts,
                                                   int *nets, int *cells, int *net_blocks, int *cell_blocks,
                                                   char *message, size_t room);

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
