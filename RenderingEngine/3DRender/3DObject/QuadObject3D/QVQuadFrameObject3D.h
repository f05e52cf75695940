#pragma once

#include "3DObject/QuadObject3D/FilterList.h"
#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"

namespace multiscene {

/// A frame of a picture book: "frameType" says whether it is the picture as it is, the picture through an
/// image filter and within a border, or one colour. Its corners may be round, and its picture goes through a
/// list of filters first. Its opacity is animated as a transparent quad's.
class QVQuadFrameObject3D : public QVQuadDiaphaneityObject3D {
  public:
    const char* className() const override { return "QVQuadFrameObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void updateDue(const Tick& tick) override;
    void updateKeyFrames(int64_t frame) override;
    std::shared_ptr<const FilterChain> filters() const override;
    Look look() const override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    enum class FrameType { Image, Filter, Color };

    /// Width and height of the picture, of any unit when they are not known.
    glm::vec2 pictureSize() const;
    /// 0 to 1 over the node's frames; over a hundred, again and again, when they have no end.
    float normalTime(int64_t frame) const;

    FilterList::Table colorTable(const KeyReader& filter);
    FilterList::Table tableOfTemplate(const std::string& name);

    FrameType frameType_ = FrameType::Image;
    FilterLook filter_;
    FilterList filters_;
    float cornerRadius_ = 0;
    glm::vec4 frameColor_{0};
};

}  // namespace multiscene
