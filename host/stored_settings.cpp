#include "stored_settings.h"

#include <cstdlib>
#include <exiv2/exiv2.hpp>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "errors.h"
#include "exiv2_setup.h"
#include "image_file.h"
#include "metadata.h"
#include "output_file.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

constexpr char kCommandName[] = "command";

std::string Variable(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : otherwise;
}

fs::path UserFolder() {
  const std::string home = Variable("HOME", "");
  const std::string config = Variable("XDG_CONFIG_HOME", home.empty() ? "" : home + "/.config");
  if (config.empty()) throw HostError("there is no place for presets: neither XDG_CONFIG_HOME nor HOME is set");
  return fs::path(config) / "kelvo" / "presets";
}

std::vector<fs::path> PresetFolders() {
  std::vector<fs::path> folders = {UserFolder()};
  std::istringstream list(Variable("XDG_CONFIG_DIRS", "/etc/xdg"));
  for (std::string folder; std::getline(list, folder, ':');)
    if (!folder.empty()) folders.push_back(fs::path(folder) / "kelvo" / "presets");
  return folders;
}

std::string FileNameOf(const std::string& name) {
  if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos)
    throw HostError("\"" + name + "\" is no name for a preset: it must not be empty, start with a dot or hold a slash");
  return name + ".json";
}

std::string KnownPresets() {
  std::string names;
  for (const fs::path& folder : PresetFolders()) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
      if (entry->path().extension() == ".json") names += (names.empty() ? "" : ", ") + entry->path().stem().string();
  }
  return names.empty() ? "there are none yet; --save-preset makes one" : "known are " + names;
}

nlohmann::ordered_json TypedValue(const std::string& text) {
  if (text == "true" || text == "false") return text == "true";
  const auto number = nlohmann::ordered_json::parse(text, nullptr, false);
  return number.is_number_integer() ? number : nlohmann::ordered_json(text);
}

StoredSettings FromJson(const nlohmann::ordered_json& json) {
  StoredSettings settings;
  if (!json.is_object()) throw HostError("it is not a JSON object");
  for (const auto& [name, value] : json.items()) {
    if (!value.is_string() && !value.is_number_integer() && !value.is_boolean())
      throw HostError("\"" + name + "\" is neither text nor a whole number nor true or false");
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    if (name == kCommandName) {
      settings.command = text;
    } else {
      settings.values.emplace_back(name, text);
    }
  }
  return settings;
}

std::string KeyOf(const std::string& name) {
  return std::string("Xmp.") + kXmpPrefix + "." + name;
}

const char* NameOf(Command command) {
  return command == Command::kBlur ? "blur" : command == Command::kEnlarge ? "enlarge" : "restore";
}

}  // namespace

StoredSettings SettingsOf(Command command, const PictureSettings& picture, const RestoreSettings& done) {
  StoredSettings settings{NameOf(command), {}};
  const auto add = [&settings](const char* name, const std::string& value) {
    settings.values.emplace_back(name, value);
  };
  if (command != Command::kEnlarge) {
    add("width", std::to_string(done.width));
    if (done.direction != 0) add("direction", std::to_string(done.direction));
    add("colour", RestoresLuma(picture, done) ? "luma" : "channels");
    if (done.raw_values) add("raw", "true");
  }
  if (command == Command::kRestore) {
    add("noise", std::to_string(done.noise));
    add("accuracy", std::to_string(done.accuracy));
    add("jpeg", std::to_string(done.jpeg));
    if (done.classic) add("classic", "true");
    if (picture.enlarge) add("enlarge", "true");
  }
  if (picture.quality) add("quality", std::to_string(*picture.quality));
  return settings;
}

nlohmann::ordered_json ToJson(const StoredSettings& settings) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  for (const auto& [name, value] : settings.values) json[name] = TypedValue(value);
  return json;
}

StoredSettings ReadPreset(const std::string& name) {
  const std::string file_name = FileNameOf(name);
  for (const fs::path& folder : PresetFolders()) {
    std::ifstream file(folder / file_name);
    if (!file) continue;
    try {
      return FromJson(nlohmann::ordered_json::parse(file));
    } catch (const nlohmann::json::exception& error) {
      throw HostError("cannot use the preset \"" + (folder / file_name).string() + "\": " + error.what());
    } catch (const HostError& error) {
      throw HostError("cannot use the preset \"" + (folder / file_name).string() + "\": " + error.what());
    }
  }
  throw HostError("there is no preset \"" + name + "\"; " + KnownPresets());
}

std::string WritePreset(const std::string& name, const StoredSettings& settings, bool replace) {
  const fs::path path = UserFolder() / FileNameOf(name);
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) throw HostError("cannot create the folder \"" + path.parent_path().string() + "\": " + error.message());
  nlohmann::ordered_json json = {{kCommandName, settings.command}};
  json.update(ToJson(settings));
  OutputFile output(path, replace);
  std::ofstream file(output.temporary_path());
  file << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
  file.close();
  if (!file) throw HostError("cannot write \"" + path.string() + "\"");
  output.Commit();
  return path;
}

std::string WithSettings(const std::string& xmp, const StoredSettings& settings) {
  Exiv2::XmpData data;
  std::string packet;
  try {
    if (!xmp.empty() && Exiv2::XmpParser::decode(data, xmp) != 0) return xmp;
    for (auto datum = data.begin(); datum != data.end();)
      datum = datum->groupName() == kXmpPrefix ? data.erase(datum) : datum + 1;
    data[KeyOf(kCommandName)] = settings.command;
    for (const auto& [name, value] : settings.values) data[KeyOf(name)] = value;
    constexpr uint16_t kFormat = Exiv2::XmpParser::omitPacketWrapper | Exiv2::XmpParser::useCompactFormat;
    if (Exiv2::XmpParser::encode(packet, data, kFormat) != 0) return xmp;
  } catch (const Exiv2::Error&) {
    return xmp;
  }
  return packet;
}

StoredSettings SettingsInFile(const std::string& path) {
  std::vector<std::string> notes;
  const std::string packet = XmpOf(OpenPicture(path, notes));
  Exiv2::XmpData data;
  StoredSettings settings;
  if (packet.empty() || Exiv2::XmpParser::decode(data, packet) != 0) data.clear();
  for (const Exiv2::Xmpdatum& datum : data) {
    if (datum.groupName() != kXmpPrefix) continue;
    if (datum.tagName() == kCommandName) {
      settings.command = datum.toString();
    } else {
      settings.values.emplace_back(datum.tagName(), datum.toString());
    }
  }
  if (settings.values.empty())
    throw HostError("there are no settings in \"" + path + "\"; name a result of restore or blur");
  return settings;
}

}  // namespace kelvo::host
