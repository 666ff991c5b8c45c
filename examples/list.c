/* The functions of a raw directory or a report, and the m/z of the most intense peak of each. */
#include <stdio.h>
#include <stdlib.h>
#include <zrml/zrml.h>

/* The m/z of the highest peak of a function's scans. */
static zrml_status FindPeak(zrml_source* source, int function, int scans, double* mz) {
  double highest = 0;
  zrml_status status = ZRML_OK;
  *mz = 0;
  for (int i = 0; i < scans && status == ZRML_OK; ++i) {
    zrml_scan scan = {.size = sizeof scan};
    double* points = NULL;
    size_t count = 0;
    status = zrml_get_scan(source, 0, function, i, &scan);
    if (status == ZRML_OK && scan.points > 0) {
      points = malloc(2 * scan.points * sizeof *points);
      if (points == NULL) return ZRML_NO_MEMORY;
      status =
          zrml_read_points(source, 0, function, i, points, points + scan.points, scan.points, &count, NULL);
    }
    for (size_t p = 0; p < count; ++p) {
      if (points[scan.points + p] <= highest) continue;
      highest = points[scan.points + p];
      *mz = points[p];
    }
    free(points);
  }
  return status;
}

static zrml_status List(zrml_source* source) {
  int functions = 0;
  zrml_status status = zrml_function_count(source, 0, &functions);
  for (int i = 0; i < functions && status == ZRML_OK; ++i) {
    zrml_function function = {.size = sizeof function};
    int scans = 0;
    double mz = 0;
    status = zrml_get_function(source, 0, i, &function);
    if (status == ZRML_OK) status = zrml_scan_count(source, 0, i, &scans);
    if (status == ZRML_OK) status = FindPeak(source, i, scans, &mz);
    if (status == ZRML_OK) printf("%s: %d scans, highest peak at m/z %.4f\n", function.name, scans, mz);
  }
  return status;
}

int main(int argc, char** argv) {
  zrml_source* source = NULL;
  zrml_status status = zrml_open(argc > 1 ? argv[1] : "run.raw", &source);
  if (status != ZRML_OK) {
    fprintf(stderr, "%s\n", zrml_open_message());
    return status;
  }
  status = List(source);
  if (status != ZRML_OK) fprintf(stderr, "%s\n", zrml_message(source));
  zrml_close(source);
  return status;
}
