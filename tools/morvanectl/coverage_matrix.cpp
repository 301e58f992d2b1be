#include "coverage_matrix.h"

#include "core/preset_manager.h"
#include "tables/preset_keys.h"

#include <fnmatch.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace morvane::ctl {

namespace {

/// The keys of one parameter within a set, where nothing stands between them.
struct Stretch {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The keys of a preset, by parameter.
class KeysByParameter {
public:
    /// @param keys borrowed; null if the preset does not exist.
    explicit KeysByParameter(const KeySet* keys) : keys_(keys) {
        if (keys_ == nullptr)
            return;
        std::size_t place = 0;
        Stretch* last = nullptr;
        std::string_view lastName;
        for (const auto key : *keys_) {
            const auto name = key.view().substr(0, key.view().find('['));
            if (last == nullptr || name != lastName) {
                last = &stretches_.try_emplace(name, Stretch{place, 0}).first->second;
                lastName = name;
            }
            ++last->count;
            ++place;
        }
    }

    std::size_t count(std::string_view parameter) const { return stretch(parameter).count; }

    template <typename Take>
    void forEach(std::string_view parameter, Take take) const {
        const auto [first, count] = stretch(parameter);
        for (auto place = first; place < first + count; ++place)
            take((*keys_)[place].view());
    }

    bool hasSame(std::string_view parameter, const KeysByParameter& other) const {
        const auto [first, count] = stretch(parameter);
        const auto [otherFirst, otherCount] = other.stretch(parameter);
        if (count != otherCount)
            return false;
        for (std::size_t i = 0; i < count; ++i) {
            if ((*keys_)[first + i].view() != (*other.keys_)[otherFirst + i].view())
                return false;
        }
        return true;
    }

private:
    Stretch stretch(std::string_view parameter) const {
        const auto found = stretches_.find(parameter);
        return found == stretches_.end() ? Stretch{} : found->second;
    }

    const KeySet* keys_;
    std::unordered_map<std::string_view, Stretch> stretches_;
};

/// What there is on one variant.
struct DeviceOnVariant {
    PresetManager manager;
    std::vector<KeySet> keys; ///< of each parameter of the matrix
};

bool canBeCovered(const SystemParameter& parameter) {
    return parameter.access == AccessType::ACCESS_RO ||
           parameter.access == AccessType::ACCESS_ROSTRICT ||
           parameter.access == AccessType::ACCESS_RW;
}

/// Fills a matrix, one variant after the other: only the tables of two are in memory.
class MatrixBuilder {
public:
    MatrixBuilder(const Definitions& definitions, std::vector<DescribedVariant> variants,
                  const MatrixScope& scope)
        : definitions_(definitions),
          scope_(scope) {
        matrix_.variants = std::move(variants);
        for (const auto& [name, parameter] : definitions.parameters) {
            const bool isMeant = scope.pattern.empty() ||
                                 fnmatch(scope.pattern.c_str(), std::string(name).c_str(), 0) == 0;
            if (isMeant && canBeCovered(parameter))
                matrix_.parameters.push_back({&parameter, {}, false});
        }
    }

    // All variants are compared with the first one: then all are the same, or one differs from it.
    CoverageMatrix build() {
        const auto first = onVariant(0);
        addCoverage(first, 0);
        for (std::size_t variant = 1; variant < matrix_.variants.size(); ++variant) {
            const auto other = onVariant(variant);
            addCoverage(other, variant);
            compare(first, other);
        }
        return std::move(matrix_);
    }

private:
    DeviceOnVariant onVariant(std::size_t variant) {
        DeviceOnVariant device{PresetManager(definitions_, matrix_.variants[variant].arguments),
                               {}};
        for (auto& row : matrix_.parameters) {
            device.keys.emplace_back();
            row.keys.emplace_back();
            for (const auto* const map :
                 {&device.manager.readOnly(), &device.manager.readWrite()}) {
                const auto place = map->find(row.definition->name);
                if (!place)
                    continue;
                device.keys.back() = PresetGenerate::parameterKeys(
                    device.manager.indices(), row.definition->name, map->indexNames(*place));
                row.keys.back() = device.keys.back().size();
            }
        }
        return device;
    }

    void addCoverage(const DeviceOnVariant& device, std::size_t variant) {
        for (const auto& [name, keySet] : device.manager.presets()) {
            if (!scope_.preset.empty() && name != scope_.preset)
                continue;
            auto& column =
                matrix_.presets
                    .try_emplace(name, matrix_.parameters.size(), matrix_.variants.size())
                    .first->second;
            const KeysByParameter keys(&keySet);
            for (std::size_t i = 0; i < matrix_.parameters.size(); ++i)
                column.covered(i, variant) =
                    covered(keys, *matrix_.parameters[i].definition, device.keys[i]);
        }
    }

    static CoveredKeys covered(const KeysByParameter& keys, const SystemParameter& parameter,
                               const KeySet& own) {
        if (parameter.access == AccessType::ACCESS_RW) // no list adds keys to it
            return {keys.count(parameter.name), 0};
        CoveredKeys covered;
        keys.forEach(parameter.name, [&](std::string_view key) {
            ++(own.contains(key) ? covered.own : covered.unknown);
        });
        return covered;
    }

    void compare(const DeviceOnVariant& first, const DeviceOnVariant& other) {
        std::vector<bool> isOther;
        for (std::size_t i = 0; i < matrix_.parameters.size(); ++i) {
            auto& row = matrix_.parameters[i];
            isOther.push_back(row.keys.front().has_value() != row.keys.back().has_value() ||
                              !(first.keys[i] == other.keys[i]));
            row.differs = row.differs || isOther.back();
        }
        for (auto& [name, column] : matrix_.presets) {
            const KeysByParameter before(first.manager.findPreset(name));
            const KeysByParameter keys(other.manager.findPreset(name));
            for (std::size_t i = 0; i < matrix_.parameters.size(); ++i) {
                const auto parameter = matrix_.parameters[i].definition->name;
                if ((isOther[i] && keys.count(parameter) > 0) || !keys.hasSame(parameter, before))
                    column.setDiffers(i);
            }
        }
    }

    const Definitions& definitions_;
    const MatrixScope& scope_;
    CoverageMatrix matrix_;
};

} // namespace

bool ParameterRow::exists() const {
    return std::any_of(keys.begin(), keys.end(),
                       [](const auto& count) { return count.has_value(); });
}

bool CoverageMatrix::differs(std::size_t parameter) const {
    return std::any_of(presets.begin(), presets.end(),
                       [&](const auto& preset) { return preset.second.differs(parameter); });
}

CoverageMatrix coverageMatrix(const Definitions& definitions,
                              std::vector<DescribedVariant> variants, const MatrixScope& scope) {
    return MatrixBuilder(definitions, std::move(variants), scope).build();
}

const char* extentOf(const CoveredKeys& covered, std::size_t keys) {
    if (covered.own == 0)
        return "none";
    return covered.own == keys ? "all" : "some";
}

} // namespace morvane::ctl
