#include "platform/gl/ShaderCost.h"

namespace platform::test {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t count = 0; count < times; ++count) all += text;
    return all;
}

/// Doubling macros: `height` of them make two to that power of the first.
std::string doubling(int height, const std::string& first) {
    std::string text = "#define A0 " + first + "\n";
    for (int level = 1; level <= height; ++level) {
        const std::string lower = "A" + std::to_string(level - 1);
        text += "#define A" + std::to_string(level) + " " + lower + " " + lower + "\n";
    }
    return text;
}

std::string mainOf(const std::string& body) { return "void main() { " + body + " }"; }

std::string loops(const std::string& header, int count, const std::string& body) {
    return mainOf(repeated(header, static_cast<size_t>(count)) + body);
}

}  // namespace

/// Bombs of a few hundred bytes, and the same in other clothes.
TEST(ShaderText, WhatWouldGrowWithoutBoundIsRefused) {
    const struct {
        std::string text, problem;
    } cases[] = {
        {doubling(16, "1.0 +") + mainOf("gl_FragColor = vec4(A16 1.0);"), "macros expanded"},
        {doubling(40, "1.0 +") + mainOf("gl_FragColor = vec4(A40 1.0);"), "macros expanded"},
        {doubling(40, "") + mainOf("A40;"), "macros expanded"},
        {"#if 0\n#define A40 1\n#endif\n" + doubling(40, "1.0 +") + "#if 0\n#define A40 1\n#endif\n" +
             mainOf("A40;"),
         "macros expanded"},
        {"#\\\ndefine B(x) x x x x x x x x\n" + mainOf("B(B(B(B(B(B(1.0))))));"), "macros expanded"},
        {"#define B(x) x x\n#define CALL(f, x) f(x)\n" +
             mainOf(repeated("CALL(B,", 16) + "1" + repeated(")", 16)),
         "macros expanded"},
        {"#define F(a) a a\n" + mainOf(repeated("F(", 20) + "1.0" + repeated(")", 20) + ";"),
         "macros expanded"},
        {"#define F(a)\n" + mainOf(repeated("F(", 7000)), "macros expanded"},
        {"#define JOIN(a, b) a ## b\n" + mainOf("JOIN(whi, le)(true) {}"), "##"},
        {mainOf("float y = " + repeated("sin(x)+", 12'000) + "0.0;"), "macros expanded"},
        {mainOf("float a[1000000];"), "elements in an array"},
        {"#define N 1000\n" + mainOf("float a[N*N];"), "elements in an array"},
        {"const int n = 100000; uniform float a[n];" + mainOf(""), "elements in an array"},
        {mainOf("while (true) {}"), "\"while\""},
        {mainOf("if (x) { do { y++; } while (x); }"), "\"do\""},
        {"#define FOREVER while(true)\n" + mainOf("FOREVER {}"), "\"while\""},
        {loops("for(int i=0;i<64;i++)", 8, "c += x;"), "turn too often"},
        {loops("for(int i=64;i>=0;--i){", 8, "c += x;" + repeated("}", 8)), "turn too often"},
        {"const int n = 64;" + loops("for(int i=0;i<n;i++)", 8, "c += x;"), "turn too often"},
        {mainOf("for(int i=0;i<2000000000;i++) c+=x;"), "turn too often"},
        {"float f(){ float c; for(int i=0;i<2000;i++) c+=1.0; return c; }" +
             mainOf("for(int i=0;i<2000;i++) c+=f();"),
         "turn too often"},
        {"uniform mat4 m;" + mainOf(repeated("x = m*m*m*m*m*m*m*m;", 700)),
         "functions put where they are called"},
        {mainOf(repeated("{", 100) + repeated("}", 100)), "nested"},
        {mainOf(repeated("if(x){}else ", 100) + "{}"), "nested"},
    };
    for (const auto& each : cases)
        EXPECT_THAT(shaderTextProblem(each.text), HasSubstr(each.problem)) << each.text.substr(0, 200);
}

/// Functions that call the one before twice, in whatever order they are written.
TEST(ShaderText, FunctionsCountWhereTheyAreCalled) {
    std::string text, reversed, prototypes;
    for (int level = 0; level < 20; ++level) {
        const std::string head = "float f" + std::to_string(level) + "(float x)";
        const std::string lower = "f" + std::to_string(level - 1) + "(x)";
        const std::string function = head + "{ return " + (level == 0 ? "x" : lower + "+" + lower) + "; }\n";
        text += function;
        reversed = function + reversed;
        prototypes += head + ";\n";
    }
    for (const std::string& each :
         {text, prototypes + reversed, text + mainOf("gl_FragColor = vec4(f19(1.0));")})
        EXPECT_THAT(shaderTextProblem(each), HasSubstr("functions put where they are called"));
}

TEST(ShaderText, WhatShadersDoIsAllowed) {
    for (const std::string& text : {
             std::string(),
             std::string("/* while(true) */ // do\n") + mainOf("gl_FragColor = vec4(1.0);"),
             "#define LIGHT(i, k) addLight(lights[i], k);\nvoid addLight(vec4 l, int k) {}\n" +
                 mainOf("LIGHT(0, 1) LIGHT(1, 2)"),
             "#ifdef GL_FRAGMENT_PRECISION_HIGH\n#define P highp\n#else\n#define P mediump\n#endif\n"
             "precision P float;\n" +
                 mainOf("P float a = 1.0;"),
             // a blur of 33 by 33 samples, a march of 128 steps with a body of its own
             mainOf("for(int x=-16;x<=16;x++) for(int y=-16;y<=16;y++) c+=texture2D(t,p+vec2(x,y)*s);"),
             "float map(vec3 p) {" + repeated("p = abs(p) - 0.5;", 20) + "return length(p); }" +
                 mainOf("for(int i=0;i<128;i++){ d=map(p); if(d<0.01) break; p+=d*r; }"),
             mainOf("for(int i=0;i<lightNumber;i++) c+=x;"),
             std::string("void main() {\r\n  gl_FragColor = vec4(1.0); \\\r\n }\r\n"),
             std::string("#define a b\n#define b a\n") + mainOf("a b;"),
             // a macro without parameters calls nothing
             "#define V vec2\n" + mainOf("x = " + repeated("V(", 250) + "1.0" + repeated(")", 250) + ";"),
         })
        EXPECT_THAT(shaderTextProblem(text), IsEmpty()) << text;
}

}  // namespace platform::test
