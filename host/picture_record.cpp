#include "picture_record.h"

#include "stored_settings.h"

namespace kelvo::host {
namespace {

constexpr const char* kOutcomeNames[kOutcomes] = {"written", "sharp", "skipped", "planned", "failed", "interrupted"};

std::string Participle(const Options& options) {
  if (options.command == Command::kBlur) return "blurred";
  return options.command == Command::kEnlarge ? "enlarged" : "restored";
}

// "restored with width 4 in direction 30, JPEG strength 30 at 0,0, enlarging"
std::string Treatment(const PictureRecord& record, const Options& options) {
  const RestoreSettings& settings = record.settings;
  const bool open = options.picture.width.automatic && !record.findings.any();  // of a dry run
  if (options.command == Command::kEnlarge) return "enlarged";
  if (!open && settings.width == 0) return options.picture.enlarge ? "enlarged only" : "written as it is";
  std::string text =
      Participle(options) + " with " + (open ? "the width found" : "width " + std::to_string(settings.width));
  if (settings.direction != 0) text += " in direction " + std::to_string(settings.direction);
  if (settings.jpeg != 0)
    text += ", JPEG strength " + std::to_string(settings.jpeg) + " at " + std::to_string(settings.jpeg_column) + "," +
            std::to_string(settings.jpeg_row);
  return options.picture.enlarge ? text + ", enlarged," : text + (settings.jpeg != 0 ? "," : "");
}

}  // namespace

const char* NameOf(Outcome outcome) {
  return kOutcomeNames[static_cast<int>(outcome)];
}

std::string LineOf(const PictureRecord& record, const Options& options) {
  const std::string found = record.findings.Text();
  const std::string start = record.input + ": " + found + (found.empty() ? "" : "; ");
  switch (record.outcome) {
    case Outcome::kWritten:
      return start + Treatment(record, options) + " into " + record.output;
    case Outcome::kSharp:
      return start + "nothing to restore, nothing written; to restore all the same give --width";
    case Outcome::kSkipped:
      return record.input + ": skipped, " + record.output + " exists";
    case Outcome::kPlanned:
      return record.input + ": would be " + Treatment(record, options) + " into " + record.output;
    case Outcome::kInterrupted:
      return record.input + ": interrupted";
    case Outcome::kFailed:
      break;
  }
  return record.input + ": failed";
}

nlohmann::ordered_json JsonOf(const Detection& found, Wanted measured) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  if (measured.width) {
    json["width"] = found.width;
    json["votes"] = found.votes;
    json["smoothed_votes"] = found.smoothed_votes;
  }
  if (measured.grid)
    json["jpeg"] = {{"strength", found.jpeg}, {"column_phase", found.column_phase}, {"row_phase", found.row_phase}};
  return json;
}

nlohmann::ordered_json JsonOf(const PictureRecord& record, const Options& options) {
  nlohmann::ordered_json json = {{"input", record.input}};
  if (!record.output.empty()) json["output"] = record.output;
  json["outcome"] = NameOf(record.outcome);
  if (record.columns > 0) {
    json["columns"] = record.columns;
    json["rows"] = record.rows;
  }
  if (record.outcome == Outcome::kWritten)
    json["settings"] = ToJson(SettingsOf(options.command, options.picture, record.settings));
  if (record.findings.any()) json["detection"] = JsonOf(record.findings.detection, record.findings.measured);
  if (record.findings.noise) json["detection"]["noise"] = *record.findings.noise;
  if (!record.notes.empty()) json["notes"] = record.notes;
  if (!record.error.empty()) json["error"] = record.error;
  json["seconds"] = record.seconds;
  return json;
}

}  // namespace kelvo::host
