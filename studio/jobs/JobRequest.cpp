#include "studio/jobs/JobRequest.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>

#include "app/job/UserText.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/net/HttpDownload.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"

namespace multiscene::studio::request {

using platform::Value;

namespace {

constexpr int64_t kMostSide = 8192;
constexpr auto kMostPixels = platform::limitOf<int64_t>("maxVideoPixels");
constexpr int64_t kDraftSide = 640;
constexpr const char* kDraftPreset = "ultrafast";

Value cropSchema() {
    const Value share = schema::number(-16, 16);
    return schema::object({{"x", share},
                           {"y", share},
                           {"width", share},
                           {"height", share},
                           {"angle?", schema::number(-360, 360)}});
}

std::string numberText(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

struct Size {
    int64_t width = 0, height = 0;

    int64_t pixels() const { return width * height; }
    std::string text() const { return std::to_string(width) + "x" + std::to_string(height); }
};

int64_t even(double side) { return std::max<int64_t>(2, 2 * std::llround(side / 2)); }

Size sizeOf(const Value& request, const TemplateFacts& facts, bool isDraft) {
    const Value& asked = request["size"];
    const Size whole =
        asked ? Size{asked.integer("width"), asked.integer("height")} : Size{facts.width, facts.height};
    const int64_t longest = std::max(whole.width, whole.height);
    if (!isDraft || longest <= kDraftSide) return whole;
    const double scale = static_cast<double>(kDraftSide) / static_cast<double>(longest);
    return {even(static_cast<double>(whole.width) * scale), even(static_cast<double>(whole.height) * scale)};
}

/// Judges what a template is given, and gathers what is wrong.
class Judgement {
  public:
    Judgement(const TemplateFacts& facts, UploadStore& uploads, const std::string& session)
        : facts_(facts), uploads_(uploads), session_(session) {}

    void values(const Value& values) {
        for (const auto& [key, value] : values.dictionary()) {
            const TemplateFacts::Input* input = facts_.input(key);
            if (!input)
                fault("/values/" + key, key, "the template does not ask for this");
            else if (value.isString())
                text(*input, value.stringValue());
            else {
                upload("/values/" + key + "/upload", key, value.string("upload"), {input->kind});
                crop(key, value["crop"]);
            }
        }
    }

    /// Of a place beside the photo nothing is left to show.
    void crop(const std::string& key, const Value& crop) {
        const auto middle = [&](const char* start, const char* length) {
            return crop[start].doubleValue() + crop[length].doubleValue() / 2;
        };
        const double across = middle("x", "width"), down = middle("y", "height");
        if (crop && !(across >= 0 && across <= 1 && down >= 0 && down <= 1))
            fault("/values/" + key + "/crop", key, "its middle should lie in the photo");
    }

    void music(const Value& music) {
        if (music.string("kind") != "own") return;
        if (!music.has("upload"))
            fault("/music/upload", "", "is missing");
        else
            upload("/music/upload", "", music.string("upload"), {"sound", "video"});
    }

    void fault(const std::string& pointer, const std::string& key, const std::string& message) {
        faults_.push_back({pointer, key, message});
    }

    /// Throws when something is wrong.
    std::vector<std::string> used() const {
        if (faults_.empty()) return {used_.begin(), used_.end()};
        Problem problem(422, "input-fault", faults_.front().message);
        problem.errors = faults_;
        throw problem;
    }

  private:
    void text(const TemplateFacts::Input& input, const std::string& text) {
        if (input.kind != "text") return fault("/values/" + input.key, input.key, "should be an upload");
        try {
            const QVUserTextInputModel limits(
                Value::Dictionary{{"maxLenght", input.maxCharacters}, {"maxLine", input.maxLines}});
            acceptText(text, input.key, &limits);
        } catch (const platform::Error& error) {
            fault("/values/" + input.key, input.key, error.message());
        }
    }

    void upload(const std::string& pointer, const std::string& key, const std::string& id,
                const std::set<std::string>& kinds) {
        const auto found = uploads_.find(id, session_);
        if (!found) return fault(pointer, key, "there is no such upload");
        if (!kinds.contains(found->kind) && !kinds.contains("file"))
            return fault(pointer, key, "should be a " + *kinds.begin() + ", not a " + found->kind);
        used_.insert(id);
    }

    const TemplateFacts& facts_;
    UploadStore& uploads_;
    const std::string session_;
    std::vector<ProblemEntry> faults_;
    std::set<std::string> used_;
};

std::optional<std::string> pathOf(const Value& value, UploadStore& uploads, const std::string& session) {
    const auto upload = uploads.find(value.string("upload"), session);
    return upload ? std::optional(uploads.fileOf(*upload).string()) : std::nullopt;
}

void addMusic(const Value& music, const Job& job, UploadStore& uploads, std::vector<std::string>& words) {
    const std::string kind = music.string("kind");
    if (kind == "none") words.insert(words.end(), {"--music", "none"});
    if (const auto file = pathOf(music, uploads, job.session); kind == "own" && file)
        words.insert(words.end(), {"--music", *file});
    if (kind == "none") return;
    if (music.has("volume"))
        words.insert(words.end(), {"--music-volume", numberText(music["volume"].doubleValue())});
    if (music.has("start"))
        words.insert(words.end(), {"--music-start", numberText(music["start"].doubleValue())});
}

Value withoutGone(const Value& value, UploadStore& uploads, const std::string& session) {
    const bool isGone = value.has("upload") && !uploads.find(value.string("upload"), session);
    return isGone ? Value() : value;
}

}  // namespace

Value valuesSchema(const StudioLimits& limits) {
    return schema::map(schema::either({schema::text(static_cast<int64_t>(limits.valueCharacters)),
                                       schema::object({{"upload", schema::text(64)},
                                                       {"crop?", schema::orNull(cropSchema())},
                                                       {"start?", schema::number(0, 86'400)},
                                                       {"volume?", schema::number(0, 1)}})}),
                       static_cast<int64_t>(limits.values));
}

Value musicSchema() {
    return schema::object({{"kind", schema::word({"template", "none", "own"})},
                           {"upload?", schema::text(64)},
                           {"volume?", schema::number(0, 4)},
                           {"start?", schema::number(0, platform::limitOf<double>("maxMusicSeconds"))}});
}

Value sizeSchema() {
    return schema::object(
        {{"width", schema::integer(2, kMostSide)}, {"height", schema::integer(2, kMostSide)}});
}

Value jobSchema(const StudioLimits& limits) {
    return schema::object({{"template", schema::integer()},
                           {"values?", valuesSchema(limits)},
                           {"music?", schema::orNull(musicSchema())},
                           {"size?", schema::orNull(sizeSchema())},
                           {"draft?", schema::boolean()},
                           {"title?", schema::text(200)},
                           {"callback?", schema::orNull(schema::text(2000))},
                           {"metadata?", schema::anything()}});
}

std::vector<std::string> judgeValues(const Value& values, const TemplateFacts& facts, UploadStore& uploads,
                                     const std::string& session) {
    Judgement judgement(facts, uploads, session);
    judgement.values(values);
    return judgement.used();
}

Planned plan(const Value& body, const TemplateFacts& facts, UploadStore& uploads, const std::string& session,
             const StudioLimits& limits) {
    Judgement judgement(facts, uploads, session);
    judgement.values(body["values"]);
    judgement.music(body["music"]);
    const Size size = sizeOf(body, facts, body.boolean("draft"));
    if (size.width % 2 != 0 || size.height % 2 != 0) judgement.fault("/size", "", "should be even numbers");
    if (size.pixels() > kMostPixels)
        judgement.fault("/size", "", "is larger than " + std::to_string(kMostPixels) + " pixels");
    if (platform::jsonText(body["metadata"]).size() > limits.metadataBytes)
        judgement.fault("/metadata", "", "is larger than " + std::to_string(limits.metadataBytes) + " bytes");
    if (const std::string callback = body.string("callback");
        !callback.empty() && !platform::isHttpUrl(callback))
        judgement.fault("/callback", "", "is no http or https address");
    Planned planned;
    planned.uploads = judgement.used();
    planned.pixels = size.pixels();
    planned.job.kind = body.boolean("draft") ? JobKind::Draft : JobKind::Video;
    planned.job.templateId = facts.id;
    planned.job.templateTitle = facts.title;
    planned.job.title = body.string("title").empty() ? facts.title : body.string("title");
    planned.job.request = body;
    planned.job.metadata = body["metadata"];
    planned.job.callback = body.string("callback");
    planned.job.total = std::max<int64_t>(facts.frames, 0);
    return planned;
}

int64_t pixelsOf(const Value& body, const TemplateFacts& facts) {
    return sizeOf(body, facts, body.boolean("draft")).pixels();
}

Value mediaOf(const Value& values, UploadStore& uploads, const std::string& session) {
    Value::Dictionary media;
    for (const auto& [key, value] : values.dictionary()) {
        if (value.isString()) {
            media[key] = value;
        } else if (const auto file = pathOf(value, uploads, session)) {
            Value::Dictionary entry{{"file", *file}};
            for (const char* name : {"crop", "start", "volume"})
                if (value.has(name)) entry[name] = value[name];
            media[key] = entry.size() == 1 ? Value(*file) : Value(std::move(entry));
        }
    }
    return media;
}

std::vector<std::string> wordsOf(const Job& job, const TemplateFacts& facts, UploadStore& uploads) {
    std::vector<std::string> words{"make", facts.source};
    const bool isDraft = job.kind == JobKind::Draft;
    if (isDraft || job.request.has("size"))
        words.insert(words.end(), {"--size", sizeOf(job.request, facts, isDraft).text()});
    if (isDraft) words.insert(words.end(), {"--preset", kDraftPreset});
    addMusic(job.request["music"], job, uploads, words);
    return words;
}

Value asked(const Job& job, UploadStore& uploads) {
    Value::Dictionary values;
    for (const auto& [key, value] : job.request["values"].dictionary())
        values[key] = withoutGone(value, uploads, job.session);
    Value request = job.request.with("values", std::move(values));
    if (const Value& music = job.request["music"])
        request = request.with("music", withoutGone(music, uploads, job.session));
    return request;
}

}  // namespace multiscene::studio::request
