// kelvo: restores defocused pictures from the command line.
#include <iostream>
#include <new>
#include <vips/vips8>

#include "cpu_level.h"
#include "demo.h"
#include "detect_job.h"
#include "errors.h"
#include "interrupt.h"
#include "members.h"
#include "options.h"
#include "restore_job.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

ExitStatus Run(const char* program, const Options& options) {
  try {
    if (options.command == Command::kMembers) {
      PrintMember(options.settings.width, options.settings.direction, options.json);
      return kSuccess;
    }
    ChosenRoutines();  // refuses a wrong KELVO_CPU before anything is done
    const VipsSession session(program, options.threads);
    if (options.command == Command::kDetect) return RunDetectJob(options);
    if (options.command == Command::kDemo) {
      RunDemo(options);
    } else {
      RunPictureJob(options);
    }
    return kSuccess;
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
  Options options;
  if (const auto status = ParseOptions(argc, argv, options)) return *status;
  CatchStopSignals();
  const ExitStatus status = Run(argv[0], options);
  if (status == kFailure) EndByCaughtSignal();
  return status;
}
