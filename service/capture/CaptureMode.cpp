// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/CaptureMode.h"

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

std::unique_ptr<TrafficSource> makeDiagSource(std::string& error) {
    auto source = DiagSource::create(error);
    if (!source) {
        error = "capture: no socket diagnostics: " + error;
    }
    return source;
}

std::unique_ptr<TrafficSource> makeBpfSource(std::string& error) {
    auto source = BpfSource::create(error);
    if (!source) {
        error = "capture: no programs in the kernel: " + error;
    }
    return source;
}

std::unique_ptr<TrafficSource> makeBestSource(std::string& error) {
    if (auto source = makeBpfSource(error)) {
        return source;
    }
    logLine(error);
    return makeDiagSource(error);
}

std::unique_ptr<TrafficSource> makeSource(CaptureMode mode, std::string& error) {
    switch (mode) {
        case CaptureMode::Auto:
            return makeBestSource(error);
        case CaptureMode::Bpf:
            return makeBpfSource(error);
        case CaptureMode::Diag:
            return makeDiagSource(error);
        case CaptureMode::Off:
            break;
    }
    return std::make_unique<NoTraffic>();
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

std::unique_ptr<TrafficSource> makeCaptureSource(CaptureMode mode, std::string& error) {
    auto source = makeSource(mode, error);
    if (source) {
        logLine("capture: ", source->name());
    }
    return source;
}

}  // namespace service
