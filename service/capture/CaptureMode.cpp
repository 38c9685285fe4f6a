// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/CaptureMode.h"

#include <utility>

#include "service/capture/DiagSource.h"
#include "service/capture/bpf/BpfSource.h"
#include "service/log/Log.h"

namespace service {

namespace {

class NoTraffic : public TrafficSource {
  public:
    std::string_view name() const override { return "off"; }
    std::vector<TrafficSample> poll(Moment) override { return {}; }
};

CaptureChoice makeDiagSource(const std::string& reason) {
    std::string error;
    if (auto source = DiagSource::create(error)) {
        return {std::move(source), reason};
    }
    return {nullptr, "no socket diagnostics: " + error};
}

CaptureChoice makeBpfSource(const std::string& reason) {
    std::string error;
    if (auto source = BpfSource::create(error)) {
        return {std::move(source), reason};
    }
    return {nullptr, "no programs in the kernel: " + error};
}

CaptureChoice makeBestSource() {
    CaptureChoice best = makeBpfSource("it sees most");
    if (best.source) {
        return best;
    }
    CaptureChoice next = makeDiagSource(best.reason);
    if (!next.source) {
        next.reason = best.reason + "; " + next.reason;
    }
    return next;
}

CaptureChoice makeSource(CaptureMode mode) {
    constexpr char asked[] = "it was asked for";
    switch (mode) {
        case CaptureMode::Auto:
            return makeBestSource();
        case CaptureMode::Bpf:
            return makeBpfSource(asked);
        case CaptureMode::Diag:
            return makeDiagSource(asked);
        case CaptureMode::Off:
            break;
    }
    return {std::make_unique<NoTraffic>(), asked};
}

}  // namespace

std::optional<CaptureMode> captureModeFromText(std::string_view text) {
    if (text == "auto") {
        return CaptureMode::Auto;
    }
    if (text == "bpf") {
        return CaptureMode::Bpf;
    }
    if (text == "diag") {
        return CaptureMode::Diag;
    }
    if (text == "off") {
        return CaptureMode::Off;
    }
    return std::nullopt;
}

CaptureChoice makeCaptureSource(CaptureMode mode) {
    CaptureChoice choice = makeSource(mode);
    if (choice.source) {
        logLine("capture: ", choice.source->name(), ", because: ", choice.reason);
    } else {
        choice.reason = "capture: " + choice.reason;
    }
    return choice;
}

}  // namespace service
