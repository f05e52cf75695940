#include "studio/metrics/MetricsText.h"

#include <cstdio>

namespace multiscene::studio {

namespace {

std::string numberText(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", number);
    return text;
}

std::string escaped(const std::string& value) {
    std::string text;
    for (const char letter : value) {
        if (letter == '"' || letter == '\\') text += '\\';
        text += letter == '\n' ? ' ' : letter;
    }
    return text;
}

}  // namespace

void Histogram::add(double seconds) {
    for (size_t at = 0; at < kBounds.size(); ++at) counts_[at] += seconds <= kBounds[at];
    ++counts_.back();
    sum_ += seconds;
}

void MetricsText::family(const std::string& name, const char* type, const char* help) {
    name_ = name;
    text_ += "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
}

void MetricsText::samples(const Histogram& histogram, const MetricLabels& labels) {
    MetricLabels bounded = labels;
    bounded.emplace_back("le", "");
    for (size_t at = 0; at < histogram.counts().size(); ++at) {
        bounded.back().second = at < Histogram::kBounds.size() ? numberText(Histogram::kBounds[at]) : "+Inf";
        line("_bucket", bounded, static_cast<double>(histogram.counts()[at]));
    }
    line("_sum", labels, histogram.sum());
    line("_count", labels, static_cast<double>(histogram.counts().back()));
}

void MetricsText::line(std::string_view suffix, const MetricLabels& labels, double value) {
    text_ += name_;
    text_ += suffix;
    for (size_t at = 0; at < labels.size(); ++at)
        text_ += (at == 0 ? "{" : ",") + labels[at].first + "=\"" + escaped(labels[at].second) + "\"";
    text_ += labels.empty() ? " " : "} ";
    text_ += numberText(value) + "\n";
}

}  // namespace multiscene::studio
