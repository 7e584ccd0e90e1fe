/* SPDX-License-Identifier: MIT */
/*
 * Tells the heights of every scan in a file or folder, and writes what it read as a recording:
 *   cc heights.c $(pkg-config --cflags --libs trelvane) -lm -o heights
 *   ./heights part.sur part.rep
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <trelvane.h>

static trelvane_error error;

static void require(trelvane_status status) {
  if (status == TRELVANE_OK) return;
  fprintf(stderr, "%s (status %d, code %d)\n", error.text, (int)error.status, (int)error.code);
  exit(1);
}

static void tell_heights(const trelvane_scan* scan) {
  trelvane_scan_info info = {.size = sizeof info};
  require(trelvane_scan_get_info(scan, &info, &error));
  const size_t count = (size_t)info.width * info.length;
  float* heights = malloc(count * sizeof *heights);
  if (heights == NULL) exit(1);
  require(trelvane_scan_heights_f32(scan, heights, count, &error));
  size_t valid = 0;
  float lowest = INFINITY;
  float highest = -INFINITY;
  for (size_t i = 0; i < count; ++i) {
    if (isnan(heights[i])) continue;
    ++valid;
    lowest = fminf(lowest, heights[i]);
    highest = fmaxf(highest, heights[i]);
  }
  printf(" %u x %u, %zu valid, from %g to %g mm", (unsigned)info.width, (unsigned)info.length,
         valid, (double)lowest, (double)highest);
  free(heights);
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s <file or folder> <recording>\n", argv[0]);
    return 2;
  }
  trelvane_file* file = NULL;
  require(trelvane_open(argv[1], NULL, &file, &error));
  trelvane_file_info info = {.size = sizeof info};
  require(trelvane_file_get_info(file, &info, &error));

  trelvane_source_info* sources = calloc(info.sources, sizeof *sources);
  if (sources == NULL) return 1;
  for (size_t i = 0; i < info.sources; ++i) {
    sources[i].size = sizeof *sources;
    require(trelvane_file_get_source(file, i, &sources[i], &error));
    sources[i].arrayed = 0; /* of each array this example takes the first scan */
  }
  trelvane_writer* writer = NULL;
  require(trelvane_writer_open(argv[2], sources, info.sources, NULL, &writer, &error));

  for (uint64_t frame = 0; frame < info.frames; ++frame) {
    require(trelvane_writer_begin_frame(writer, &error));
    for (uint64_t source = 0; source < info.sources; ++source) {
      trelvane_scan* scan = NULL;
      require(trelvane_file_read_scan(file, frame, source, 0, &scan, &error));
      printf("frame %u, %s:", (unsigned)frame, sources[source].name);
      tell_heights(scan);
      printf("\n");
      require(trelvane_writer_add(writer, scan, &error));
      trelvane_scan_free(scan);
    }
  }
  require(trelvane_writer_close(writer, &error)); /* now the recording is there */
  trelvane_writer_free(writer);
  free(sources);
  trelvane_file_close(file);
  return 0;
}
