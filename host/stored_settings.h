// Settings of a run as names and values: in presets, in the metadata of results, in records.
#ifndef KELVO_HOST_STORED_SETTINGS_H
#define KELVO_HOST_STORED_SETTINGS_H

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "options.h"

namespace kelvo::host {

// Long names of options and their values as they stand on a command line; flags have the value "true" or "false".
struct StoredSettings {
  std::string command;  // the subcommand they belong to
  std::vector<std::pair<std::string, std::string>> values;
};

// What was done to a picture, with what was detected filled in.
StoredSettings SettingsOf(Command command, const PictureSettings& picture, const RestoreSettings& done);

// {"width": 5, "noise": 1, "colour": "luma", ...}
nlohmann::ordered_json ToJson(const StoredSettings& settings);

// Presets are JSON files NAME.json in kelvo/presets below $XDG_CONFIG_HOME (else ~/.config); they are looked for below
// $XDG_CONFIG_DIRS (else /etc/xdg) too. Throw HostError with the file and the reason.
StoredSettings ReadPreset(const std::string& name);
std::string WritePreset(const std::string& name, const StoredSettings& settings, bool replace);  // returns the file

// The XMP packet `xmp`, which may be empty, with the settings in it; as it is if it cannot be understood.
std::string WithSettings(const std::string& xmp, const StoredSettings& settings);

// The settings in the XMP of a picture file. Throws HostError if there are none.
StoredSettings SettingsInFile(const std::string& path);

}  // namespace kelvo::host

#endif  // KELVO_HOST_STORED_SETTINGS_H
