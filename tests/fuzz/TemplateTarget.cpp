// Whole templates, made along the key tables and played as the program plays them.
#include "app/job/FramesJob.h"
#include "app/job/JobObserver.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Scratch.h"
#include "tests/fuzz/TemplateMaker.h"

namespace multiscene::fuzz {

void playTemplate(Bytes bytes) {
    ByteSource source(bytes);
    const auto folder = emptyScratch("t");
    const bool isForced = source.below(4) != 0;
    makeTemplate(source, folder);
    FramesRequest request;
    request.source = folder.string();
    request.size = MediaSize{16, 16};
    request.renderer = Renderer::Software;
    request.isForced = isForced;
    request.selection.at = {0, 1};
    request.output = emptyScratch("frames");
    JobObserver observer;
    isTaken([&] { writeFrames(request, observer, {}); });
}

}  // namespace multiscene::fuzz
