// From a recording to a picture in memory: reads a table, finds where its first channel rises, and marks that in a figure.
// Prints:
//    CSV of 1 channel: rises at 250.5 500.5 750.5 ms, drawn as PNG
#include <tracery/figures/Figure.h>
#include <tracery/measures/TriggerScan.h>
#include <tracery/recordings/Recording.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

using namespace tracery;

int main()
{
    const std::string path = (std::filesystem::temp_directory_path() / "tracery-pulses.csv").string();
    std::ofstream table(path);
    table << "time,pulse [V]\n";
    for (int ms = 0; ms < 1000; ++ms)
        table << ms / 1e3 << ',' << (ms > 250 && ms % 250 > 0 && ms % 250 < 100 ? 3.3 : 0) << '\n';
    table.close();

    const auto recording = recordings::openRecording(path, {});
    recordings::Block block;
    std::vector<figures::Point> points;
    for (recording->read(block, 4096); block.steps() > 0; recording->read(block, 4096))
        for (std::size_t i = 0; i < block.steps(); ++i)
            points.push_back({block.times[i], block.real[i]});

    figures::Figure figure;
    figure.title = "Pulses";
    figure.panels.resize(1);
    figure.panels[0].yUnit = "V";
    figure.panels[0].yMax = 4;
    figure.panels[0].traces = {{"pulse", points}};
    const auto [first, last] = recording->range();
    measures::TriggerScan scan({recordings::openRecording(path, {}), first, last, 4096}, 0, first, 0.1);
    measures::TriggerSettings rises;
    rises.level = measures::LevelSetting{1.65};
    measures::configure(scan.controller(), rises, {});
    std::printf("%s of %zu channel: rises at", recording->info().format.c_str(), recording->info().channels.size());
    const auto mark = [&](const measures::TriggerEvent& event) {
        figure.positions.push_back({event.time, "T"});
        return std::printf(" %g", event.time * 1e3) > 0;
    };
    const std::uint64_t found = scan.run(mark, {}).found();
    const std::string png = figures::pictureOf(figure, figures::PictureFormatEnum::Png);
    std::printf(" ms, drawn as %s\n", png.substr(1, 3).c_str());
    return found == 3 && std::filesystem::remove(path) ? 0 : 1;
}
