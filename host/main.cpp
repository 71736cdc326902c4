// kelvo: restores blurred pictures from the command line.
#include <iostream>
#include <new>
#include <optional>
#include <vips/vips8>

#include "batch_job.h"
#include "compare_page.h"
#include "cpu_level.h"
#include "demo.h"
#include "detect_job.h"
#include "exiv2_setup.h"
#include "format_modules.h"
#include "interrupt.h"
#include "members.h"
#include "options.h"
#include "sheet_job.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

ExitStatus RunCommand(const Options& options) {
  switch (options.command) {
    case Command::kMembers:
      PrintMember(options.picture.tile.width, options.picture.tile.direction, options.json);
      return kSuccess;
    case Command::kDemo:
      RunDemo(options);
      return kSuccess;
    case Command::kDetect:
      return RunDetectJob(options);
    case Command::kSheet:
      RunSheetJob(options);
      return kSuccess;
    case Command::kCompare:
      WriteComparePage(options);
      return kSuccess;
    default:
      return RunBatch(options);
  }
}

ExitStatus Run(int argc, char** argv) {
  try {
    const Exiv2Session exiv2;
    std::optional<VipsSession> vips;
    Options options;
    const auto begin = [&](const Options& given) { vips.emplace(argv[0], NeedsFormatModules(given)); };
    if (const auto status = ParseOptions(argc, argv, options, begin)) return *status;
    ChosenRoutines();  // refuses a wrong KELVO_CPU before anything is done
    CatchStopSignals();
    if (options.threads > 0) vips_concurrency_set(options.threads);
    return RunCommand(options);
  } catch (const vips::VError&) {
    std::cerr << "kelvo: " << TakeVipsMessages() << "\n";
  } catch (const std::bad_alloc&) {
    std::cerr << "kelvo: out of memory\n";
  } catch (const std::exception& error) {
    if (!StopRequested()) std::cerr << "kelvo: " << error.what() << "\n";
  }
  return kFailure;
}

}  // namespace
}  // namespace kelvo::host

int main(int argc, char** argv) {
  using namespace kelvo::host;
  const ExitStatus status = Run(argc, argv);
  EndByCaughtSignal();
  return status;
}
