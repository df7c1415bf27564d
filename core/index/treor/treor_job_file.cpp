#include "core/index/treor/treor_job_file.h"

#include <cmath>

#include "core/common/numbers.h"

namespace quarvel {

TreorJob withJobDefaults(TreorJob job) {
  auto notPositive = [](double v) { return !(v > 0); };  // zero, negative or not a number
  if (job.choice < 0 || job.choice > 4) job.choice = 3;
  if (notPositive(job.wavelength)) job.wavelength = 1.54056;
  if (job.maxVolume == 0 || std::isnan(job.maxVolume)) job.maxVolume = -2000.0;
  if (job.unindexed < 0) job.unindexed = 1;
  if (notPositive(job.merit)) job.merit = 10.0;
  if (notPositive(job.d1)) job.d1 = 0.0002;
  if (notPositive(job.d2)) job.d2 = 0.0004;
  return job;
}

std::vector<std::string> treorJobLines(const TreorJob& job, const std::vector<double>& values) {
  std::vector<std::string> lines{job.peakFile};
  for (double v : values) lines.push_back(formatF(v, 10, 4));
  lines.emplace_back();
  lines.push_back("CHOICE=" + formatI(job.choice, 1) + ",");
  lines.push_back("WAVE=" + formatF(job.wavelength, 8, 5) + ",");
  lines.push_back("VOL=" + formatI(nint(job.maxVolume), 5) + ",");
  lines.push_back("NIX=" + formatI(job.unindexed, 2) + ",");
  lines.push_back("MERIT=" + formatI(nint(job.merit), 3) + ",");
  lines.push_back("D1=" + formatF(job.d1, 8, 5) + ",");
  lines.push_back("D2=" + formatF(job.d2, 8, 5) + ",");
  lines.push_back("END*");
  return lines;
}

}  // namespace quarvel
