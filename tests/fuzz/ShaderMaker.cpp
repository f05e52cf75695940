#include "tests/fuzz/ShaderMaker.h"

namespace multiscene::fuzz {

namespace {

constexpr const char* types[] = {"float", "vec2", "vec4", "int", "mat4", "bool"};
constexpr const char* numbers[] = {"1.0",        "0",    "8",       "1000000", "-1",
                                   "2147483647", "1e30", "0.0/0.0", "N",       "64u"};
constexpr const char* names[] = {
    "a", "b", "M", "f", "g", "textureCoordinate", "videoFrame", "gl_FragColor", "aplae"};
constexpr const char* operators[] = {"+", "*", "-", "/", "<", "&&", "==", "=", "##"};

class Maker {
  public:
    explicit Maker(ByteSource& source) : source_(source) {}

    std::string shader() {
        text_ =
            "precision highp float;\nuniform sampler2D videoFrame;\nuniform float aplae;\n"
            "varying vec2 textureCoordinate;\n#define N 4\n";
        for (uint32_t count = source_.below(6); count > 0; --count) topLevel();
        text_ += "void main() {\n";
        for (uint32_t count = source_.below(6); count > 0; --count) statement(0);
        text_ += "gl_FragColor = texture2D(videoFrame, textureCoordinate) * ";
        expression(0);
        text_ += ";\n}\n";
        return text_;
    }

  private:
    void topLevel() {
        switch (source_.below(7)) {
            case 0:
                macros();
                break;
            case 1:
                function();
                break;
            case 2:
                text_ += std::string("const int ") + name() + " = " + number() + ";\n";
                break;
            case 3:
                text_ += std::string("uniform ") + type() + " " + name() + "[" + number() + "];\n";
                break;
            case 4:
                text_ += "#ifdef N\n#define b(x, y) x y\n#else\n#define b a\n#endif\n";
                break;
            case 5:
                functionsThatCallEachOther();
                break;
            default:
                text_ += textOf(source_.take(source_.below(40)));
        }
    }

    /// Each doubles the one before, or calls itself.
    void macros() {
        const uint32_t count = source_.below(40);
        const bool hasParameter = source_.below(2);
        for (uint32_t index = 0; index < count; ++index) {
            const std::string before = "M" + std::to_string(index),
                              use = hasParameter ? before + "(x)" : before;
            text_ += "#define M" + std::to_string(index + 1) + (hasParameter ? "(x) " : " ") + use + " " +
                     operatorText() + " " + use + "\n";
        }
        if (source_.below(2))
            text_ += "float a = M" + std::to_string(count) + (hasParameter ? "(1.0);\n" : ";\n");
    }

    void functionsThatCallEachOther() {
        text_ += "float f0() { return 1.0; }\n";
        const uint32_t count = source_.below(40);
        for (uint32_t index = 0; index < count; ++index) {
            const std::string call = "f" + std::to_string(index) + "()";
            text_ += "float f" + std::to_string(index + 1) + "() { return " + call + " + " + call + "; }\n";
        }
        text_ += "float f() { return f" + std::to_string(count) + "(); }\n";
    }

    void function() {
        text_ += std::string(type()) + " " + name() + "(" + type() + " a) {\n";
        for (uint32_t count = source_.below(3); count > 0; --count) statement(0);
        text_ += "return a;\n}\n";
    }

    void statement(int depth) {
        switch (depth > 60 ? 0 : source_.below(7)) {
            case 1:
                text_ += std::string("for (int i = 0; i < ") + number() + "; i++) ";
                return source_.below(2) ? block(depth) : statement(depth + 1);
            case 2:
                text_ += "if (";
                expression(0);
                text_ += ") ";
                return block(depth);
            case 3:
                text_ += source_.below(8) ? "" : "while (true) ";
                return block(depth);
            case 4:
                text_ += std::string(type()) + " " + name() + "[" + number() + "];\n";
                return;
            case 5:
                return longSum();
            default:
                text_ += std::string(source_.below(2) ? type() : "") + " " + name() + " = ";
                expression(0);
                text_ += ";\n";
        }
    }

    void block(int depth) {
        text_ += "{\n";
        for (uint32_t count = source_.below(3); count > 0; --count) statement(depth + 1);
        text_ += "}\n";
    }

    void longSum() {
        text_ += "float s = 1.0";
        for (uint32_t count = source_.below(3000); count > 0; --count) text_ += " + aplae";
        text_ += ";\n";
    }

    void expression(int depth) {
        switch (depth > 60 ? 0 : source_.below(6)) {
            case 1:
                text_ += "(";
                expression(depth + 1);
                text_ += operatorText();
                expression(depth + 1);
                text_ += ")";
                break;
            case 2:
                text_ += std::string(name()) + "(";
                expression(depth + 1);
                text_ += source_.below(8) ? ")" : "";
                break;
            case 3:
                text_ += name();
                break;
            case 4:
                text_ += std::string(name()) + "[" + number() + "]";
                break;
            default:
                text_ += number();
        }
    }

    const char* type() { return source_.oneOf(types); }
    const char* number() { return source_.oneOf(numbers); }
    const char* name() { return source_.oneOf(names); }
    const char* operatorText() { return source_.oneOf(operators); }

    ByteSource& source_;
    std::string text_;
};

}  // namespace

std::string makeShader(ByteSource& source) { return Maker(source).shader(); }

}  // namespace multiscene::fuzz
