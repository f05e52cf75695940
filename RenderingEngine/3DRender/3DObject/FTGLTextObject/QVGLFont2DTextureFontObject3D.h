#pragma once

#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"

namespace multiscene {

/// Flat letters from a texture font, with an outline and a shadow. They stay as sharp as their atlas: up to
/// four hundred pixels a letter.
class QVGLFont2DTextureFontObject3D : public QVGLFontTextObjectBase {
  public:
    const char* className() const override { return "QVGLFont2DTextureFontObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    Made makeLetters(const platform::LetterText& text) override;
    void drawLetters(Painter& painter) override;
    void dropLetters() override;

  private:
    platform::FlatLook look_;
    platform::Color strokeColor_;
    DrawnLetters shadow_, outline_, letters_, colored_;
    Texture atlas_;
};

}  // namespace multiscene
