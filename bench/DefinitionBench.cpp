// Definition text to record and back, beside the bare work that no implementation can avoid: the parser's own document
// for reading, another writer's text of the same document for writing. The last lines print the ratios.

#include <capsule/ControlFactory.h>
#include <capsule/Serialization.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <simdjson.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace orvcapsule;

const std::vector<std::u16string> kLocales = {u"de_DE", u"en_US", u"es_ES", u"fr_FR", u"it_IT",
                                              u"ja_JP", u"ko_KR", u"pt_BR", u"ru_RU", u"zh_CN"};

UIString TenLanguages(const std::u16string& text)
{
    UIString result{std::vector<LocStrPair>()};
    for (const auto& locale : kLocales) {
        result.SetString(text + u" タイトル " + locale, locale);
    }
    return result;
}

std::shared_ptr<ClientControl> MakeControl(std::size_t i)
{
    const std::u16string id = orvcore::ToUTF16("control-" + std::to_string(i));
    const UIString label = TenLanguages(u"Control");
    switch (i % 5) {
    case 0:
        return factory::CreateSliderControl(id, label, {true}, 0, 100, 0.1 * static_cast<double>(i));
    case 1:
        return factory::CreateStringControl(id, label, {}, TenLanguages(u"Text"), {}, {}, {});
    case 2:
        return factory::CreateColorControl(id, label, {true}, {0.1, 0.2, 0.3, 1});
    case 3:
        return factory::CreatePoint2DControl(id, label, {true}, {960.5, 540.25});
    default:
        return factory::CreateCheckboxControl(id, label, {}, true);
    }
}

UTF8String MakeDefinition(std::size_t controls)
{
    kinlet::SourceInfo info;
    info.name = u"Lower third";
    info.parentProjectFile = u8"C:\\Users\\author\\Documents\\project.tsgraphic";
    info.duration = {1270080000000, 254016000000};
    info.pixelFormats = {{1111970369, 0}, {1111970370, 3}};
    info.audioChannelLayout = {{100}, {101}};
    Capsule::SourceInfoMap infos;
    Capsule::FontMap fonts;
    for (const auto& locale : kLocales) {
        infos[locale] = info;
        fonts[locale] = {"DejaVuSans", "DejaVuSerif-Bold"};
    }
    auto capsule = std::make_shared<Capsule>(u"tsfx", u"Lower third", u"6e1f0f6a-3a54-4c4e-9d55-0b2a4f6c1a03");
    capsule->SetCapsuleNameLocalized(TenLanguages(u"Lower third"));
    capsule->SetSourceInfoVector(infos);
    capsule->SetUsedFontsVector(fonts);
    Capsule::ControlList list;
    for (std::size_t i = 0; i < controls; ++i) {
        list.push_back(MakeControl(i));
    }
    capsule->SetControls(list);
    return serialization::CapsuleToJson(capsule);
}

const UTF8String& Definition(std::int64_t controls)
{
    static std::map<std::int64_t, UTF8String> made;
    auto& text = made[controls];
    if (text.empty()) {
        text = MakeDefinition(static_cast<std::size_t>(controls));
        // As the readers of packages and files give it.
        text.reserve(text.size() + orvcore::serialization::kJSONTextRoom);
    }
    return text;
}

void SetBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Definition(state.range(0)).size()));
}

void ReadFloorBareDOM(benchmark::State& state)
{
    const simdjson::padded_string padded(orvcore::AsNarrow(Definition(state.range(0))));
    for (auto _ : state) {
        simdjson::dom::parser parser;
        benchmark::DoNotOptimize(parser.parse(padded).value_unsafe());
    }
    SetBytes(state);
}

void ReadFloorBareDOMWarm(benchmark::State& state)
{
    const simdjson::padded_string padded(orvcore::AsNarrow(Definition(state.range(0))));
    simdjson::dom::parser parser;
    for (auto _ : state) {
        benchmark::DoNotOptimize(parser.parse(padded).value_unsafe());
    }
    SetBytes(state);
}

void ReadCapsule(benchmark::State& state)
{
    const UTF8String& text = Definition(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(serialization::CapsuleFromJson(text));
    }
    SetBytes(state);
}

void WriteFloorNlohmannDump(benchmark::State& state)
{
    const auto document = nlohmann::json::parse(orvcore::AsNarrow(Definition(state.range(0))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(document.dump());
    }
    SetBytes(state);
}

void WriteCapsule(benchmark::State& state)
{
    const auto capsule = serialization::CapsuleFromJson(Definition(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(serialization::CapsuleToJson(capsule));
    }
    SetBytes(state);
}

// About 20 KB and about 300 KB.
constexpr std::int64_t kSmall = 2;
constexpr std::int64_t kLarge = 270;

BENCHMARK(ReadFloorBareDOM)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(ReadFloorBareDOMWarm)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(ReadCapsule)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(WriteFloorNlohmannDump)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(WriteCapsule)->Arg(kSmall)->Arg(kLarge);

// Prints the medians of the runs and keeps the best times for the ratios.
class Reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                const double time = run.GetAdjustedCPUTime();
                const auto [known, isNew] = times_.emplace(run.run_name.str(), time);
                known->second = std::min(known->second, time);
            }
        }
        std::vector<Run> medians;
        std::copy_if(runs.begin(), runs.end(), std::back_inserter(medians),
                     [](const Run& run) { return run.aggregate_name == "median"; });
        ConsoleReporter::ReportRuns(medians);
    }
    void PrintRatio(const std::string& work, const std::string& floor) const
    {
        for (const std::int64_t size : {kSmall, kLarge}) {
            const std::string suffix = "/" + std::to_string(size);
            const auto ours = times_.find(work + suffix);
            const auto theirs = times_.find(floor + suffix);
            if (ours != times_.end() && theirs != times_.end()) { // a filter may leave one out
                std::printf("%s (%zu bytes) : %s = %.2f\n", work.c_str(), Definition(size).size(), floor.c_str(),
                            ours->second / theirs->second);
            }
        }
    }

private:
    std::map<std::string, double> times_;
};

} // namespace

int main(int argc, char** argv)
{
    // Many short runs that take turns: a machine whose speed changes is then the same for the work and its floor. What
    // the caller says comes after it and counts.
    std::vector<std::string> options = {argv[0], "--benchmark_repetitions=15", "--benchmark_min_time=0.03",
                                        "--benchmark_enable_random_interleaving=true"};
    options.insert(options.end(), argv + 1, argv + argc);
    std::vector<char*> arguments(options.size());
    std::transform(options.begin(), options.end(), arguments.begin(),
                   [](std::string& option) { return option.data(); });
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatio("ReadCapsule", "ReadFloorBareDOM");
    reporter.PrintRatio("ReadCapsule", "ReadFloorBareDOMWarm");
    reporter.PrintRatio("WriteCapsule", "WriteFloorNlohmannDump");
}
