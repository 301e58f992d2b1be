// The one core object of the daemon: the definition files, turned into lookup tables.
#pragma once

#include "paramdef/system_arguments.h"
#include "tables/device_tables.h"
#include "tables/key_set.h"
#include "tables/translation_tables.h"

#include <map>
#include <string>
#include <string_view>

namespace morvane {

struct Definitions;

/// By preset name. A preset that covers no key is not there.
using PresetTable = std::map<std::string, KeySet, std::less<>>;

/// Built once, read-only afterwards.
class PresetManager {
public:
    /// Reads and checks both definition files and derives the tables for the device that the
    /// system arguments describe. Errors in the files are reported on standard output.
    ///
    /// If a file cannot be used, construction stops and the tables stay empty: the service is
    /// offered all the same, knows no preset, and every request that names one is refused.
    PresetManager(const std::string& paramDefPath, const std::string& presetDefPath,
                  const SystemArguments& arguments);

    /// Derives the tables from definitions that have been read and checked.
    PresetManager(const Definitions& definitions, const SystemArguments& arguments);

    bool is_preset(std::string_view presetName) const;

    /// Says whether the preset covers exactly this key; false for an unknown preset.
    bool in_preset(std::string_view key, std::string_view presetName) const;

    /// @return the preset's keys, or null for an unknown preset; valid as long as the manager.
    const KeySet* findPreset(std::string_view presetName) const;

    /// Whether a parameter of this name is read-only on this device.
    bool isReadOnly(std::string_view name) const;

    /// Whether a parameter of this name is read-only or read-write on this device.
    bool isParameter(std::string_view name) const;

    const TranslationTables& translation() const { return translation_; }

    /// The values of every index of this device.
    const IndexTable& indices() const { return indices_; }

    /// The read-only and the read-write parameters of this device.
    const ParameterMap& readOnly() const { return readOnly_; }
    const ParameterMap& readWrite() const { return readWrite_; }

    /// The presets that cover a key, by name.
    const PresetTable& presets() const { return presets_; }

private:
    void derive(const Definitions& definitions, const SystemArguments& arguments);

    IndexTable indices_;
    ParameterMap readOnly_;
    ParameterMap readWrite_;
    TranslationTables translation_;
    PresetTable presets_;
};

} // namespace morvane
