#include "ycontacts_cli/ProgressLine.h"

#include <algorithm>
#include <cmath>

#include <unistd.h>

#include "ycontacts_cli/Format.h"

namespace ycontacts_cli {

namespace {

constexpr int barWidth = 24;

}  // namespace

ProgressLine::ProgressLine(std::FILE* out, std::optional<std::int64_t> expectedContacts)
    : out_(out), expectedContacts_(expectedContacts), interactive_(isatty(fileno(out)) == 1) {}

std::string ProgressLine::render(const SyncProgress& progress, std::optional<std::int64_t> expectedContacts) {
    const std::int64_t received = progress.received();
    const double rate = progress.elapsedSeconds > 0 ? static_cast<double>(received) / progress.elapsedSeconds : 0;
    std::string line;
    if (expectedContacts && *expectedContacts > 0) {
        const double fraction = std::clamp(static_cast<double>(received) / static_cast<double>(*expectedContacts), 0.0, 1.0);
        const int filled = static_cast<int>(std::lround(fraction * barWidth));
        line += "[" + std::string(static_cast<std::size_t>(filled), '#') +
                std::string(static_cast<std::size_t>(barWidth - filled), '-') + "] ";
        char percent[8];
        std::snprintf(percent, sizeof(percent), "%3d%%", static_cast<int>(fraction * 100));
        line += percent;
        line += "  " + format::count(progress.pages) + (progress.pages == 1 ? " page  " : " pages  ");
        line += format::count(received) + "/" + format::count(*expectedContacts) + " contacts  ";
        line += format::count(std::llround(rate)) + "/s";
        if (progress.finished()) {
            line += "  " + format::duration(progress.elapsedSeconds);
        } else if (rate > 0 && received < *expectedContacts) {
            line += "  ~" + format::duration(static_cast<double>(*expectedContacts - received) / rate) + " left";
        }
    } else {
        line += format::count(progress.pages) + (progress.pages == 1 ? " page  " : " pages  ");
        line += format::count(received) + " contacts  " + format::count(std::llround(rate)) + "/s  " +
                format::duration(progress.elapsedSeconds);
    }
    return line;
}

void ProgressLine::update(const SyncProgress& progress) { draw(progress, false); }

void ProgressLine::finish(const SyncProgress& progress) { draw(progress, true); }

void ProgressLine::abandon() {
    std::lock_guard lock(mutex_);
    if (finished_) return;
    if (drawnInPlace_) std::fprintf(out_, "\n");
    std::fflush(out_);
    finished_ = true;
}

void ProgressLine::draw(const SyncProgress& progress, bool final) {
    std::lock_guard lock(mutex_);
    if (finished_) return;
    const auto now = std::chrono::steady_clock::now();
    const auto interval = interactive_ ? std::chrono::milliseconds(100) : std::chrono::milliseconds(1000);
    if (!final && now - lastDrawn_ < interval) return;
    lastDrawn_ = now;
    const std::string line = "  " + render(progress, expectedContacts_);
    if (interactive_) {
        // Clear to the end of the line: the previous text may have been longer.
        std::fprintf(out_, "\r%s\x1b[K%s", line.c_str(), final ? "\n" : "");
        drawnInPlace_ = !final;
    } else {
        std::fprintf(out_, "%s\n", line.c_str());
    }
    std::fflush(out_);
    finished_ = final;
}

}  // namespace ycontacts_cli
