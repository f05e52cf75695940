#include <gtest/gtest.h>

#include <glm/gtc/matrix_transform.hpp>

#include "core/QVSceneRenderToTexture.h"
#include "platform/base/Error.h"
#include "tests/engine/FakeDriver.h"

namespace multiscene {
namespace {

class SceneGraphTest : public ::testing::Test {
  protected:
    FakeDriver driver;
    std::shared_ptr<QVScene3D> scene = QVScene3D::initRenderManager(driver);
};

platform::Value live(int64_t start, int64_t end) {
    return dictionary({{"FpsInfo", dictionary({{"startFps", start}, {"endFps", end}})}});
}

TEST_F(SceneGraphTest, AddedNodesComeWhereSortingThemAllWouldBringThem) {
    auto parent = group();
    QVObjectContainer3D::Children added;
    for (const float depth : {0.f, 2.f, -1.f, 0.f, 2.f, 5.f, -1.f, 0.f}) {
        auto child = group(), top = group();
        child->setRenderDepth(depth);
        top->setScene(scene);  // as while it is configured
        top->setRenderDepth(depth);
        parent->addChild(child);
        scene->addChild(top);
        added.push_back(child);
    }
    QVObjectContainer3D::renderDepthSortWithArray(added);
    EXPECT_EQ(parent->children(), added);
    const auto isDeeper = [](const auto& first, const auto& second) {
        return first->renderDepth() > second->renderDepth();
    };
    EXPECT_TRUE(std::is_sorted(scene->children().begin(), scene->children().end(), isDeeper));
    scene->removeAllChild();
    EXPECT_EQ(scene->numChildren(), 0u);
}

TEST_F(SceneGraphTest, AddingANodeToItsOwnParentTakesItOut) {
    auto parent = group(), child = group();
    parent->addChild(child);
    parent->addChild(child);
    EXPECT_FALSE(parent->hasChild(*child));
    EXPECT_EQ(child->parent(), parent);
}

TEST_F(SceneGraphTest, MovingANodeTakesItFromItsOldParentAndScene) {
    auto first = group(), second = group(), child = group();
    scene->addChild(first);
    first->addChild(child);
    EXPECT_EQ(child->scene(), scene);
    second->addChild(child);
    EXPECT_EQ(first->numChildren(), 0u);
    EXPECT_EQ(child->scene(), nullptr);
}

TEST_F(SceneGraphTest, WorldMatricesFollowTheParentAndAVanishedParentCountsAsZero) {
    auto parent = group(), child = group();
    parent->addChild(child);
    parent->setAlpha(0.5f);
    child->setAlpha(0.5f);
    parent->setX(10);
    child->setX(1);
    parent->updateMatrix();
    EXPECT_EQ(child->scenePosition().x, 11);
    EXPECT_EQ(child->sceneAlpha(), 0.25f);
    parent->setX(20);
    parent->updateMatrix();
    EXPECT_EQ(child->scenePosition().x, 21);
    parent.reset();
    child->setX(2);
    child->updateMatrix();
    EXPECT_EQ(child->sceneTransform(), glm::mat4(0));
}

TEST_F(SceneGraphTest, ProjectionsFollowTheNodeThoseAboveItAndEveryCamera) {
    auto parent = group(), child = group();
    parent->addChild(child);
    scene->addChild(parent);
    const auto expectUpToDate = [&](const char* what) {
        scene->updateMatrix();
        const auto& camera = child->camera() ? child->camera() : scene->camera();
        EXPECT_EQ(child->projTransform(),
                  camera->getPpTransform() * (camera->cameraLookAtTransform() * child->sceneTransform()))
            << what;
    };
    expectUpToDate("at first");
    const auto before = child->projTransform();
    scene->camera()->lookAtTransform().moveCameraToTarget({3, 0, 7});
    expectUpToDate("the camera moved");
    EXPECT_NE(child->projTransform(), before);
    scene->camera()->setFov(40);
    expectUpToDate("the camera's angle");
    scene->setCamera(QVCamera3D::initOrthWithWidth(20, 2));
    expectUpToDate("another camera of the scene");
    parent->setX(5);
    expectUpToDate("the parent moved");
    EXPECT_EQ(child->sceneTransform()[3].x, 5);
    child->setY(2);
    expectUpToDate("the node moved");
    parent->setCamera(QVCamera3D::initWithFov(60, 1));
    expectUpToDate("a camera of its own");
    child->camera()->lookAtTransform().cameraRotateFromUpVector(30);
    expectUpToDate("its own camera turned");
}

TEST_F(SceneGraphTest, NodesGoAtTheirLastFrameWithTheirTweens) {
    auto a = group(live(0, 1)), b = group(live(0, 1)), stays = group(live(0, 2));
    auto child = group(
        dictionary({{"TransformArray",
                     array({dictionary({{"sartFps", 0}, {"endFps", 9}, {"endTranslate", "1,1,1"}})})}}));
    a->addChild(child);
    for (const auto& node : {a, b, stays}) scene->addChild(node);
    scene->updateData();
    EXPECT_EQ(scene->tweens().items().size(), 1u);
    scene->renderComplete();
    EXPECT_TRUE(scene->hasChild(*a));
    scene->setCurrentRenderTime(frame(1));
    scene->renderComplete();
    EXPECT_FALSE(scene->hasChild(*a));
    EXPECT_FALSE(scene->hasChild(*b));
    EXPECT_TRUE(scene->hasChild(*stays));
    EXPECT_TRUE(scene->tweens().items().empty());
}

TEST_F(SceneGraphTest, AnInvisibleNodeKeepsItsChildrenButUpdatesItsMatrices) {
    auto parent = group(), child = group(live(0, 0));
    parent->addChild(child);
    scene->addChild(parent);
    parent->setVisible(false);
    parent->setX(3);
    scene->renderComplete();
    scene->updateMatrix();
    EXPECT_TRUE(parent->hasChild(*child));
    EXPECT_EQ(child->scenePosition().x, 3);
}

TEST_F(SceneGraphTest, SceneTexturesAreLimitedInWidthAlone) {
    const auto sizeFor = [&](int32_t width, int32_t height) {
        driver.width = width;
        driver.height = height;
        const auto sized = QVScene3D::initRenderManager(driver);
        return std::pair(sized->renderToTextureObject().fboWidth(),
                         sized->renderToTextureObject().fboHeight());
    };
    EXPECT_EQ(sizeFor(1280, 720), std::pair(1000, 562));
    EXPECT_EQ(sizeFor(720, 1280), std::pair(720, 1280));
    EXPECT_EQ(sizeFor(1000, 1000), std::pair(1000, 1000));
    EXPECT_EQ(sizeFor(3840, 2160), std::pair(1000, 562));
}

TEST_F(SceneGraphTest, ACameraNeverPlaysItsMotionItems) {
    const platform::Value info =
        dictionary({{"type", "QVOrthCamera"},
                    {"OrthWidth", 720},
                    {"TransformArray",
                     array({dictionary({{"sartFps", 0}, {"endFps", 9}, {"startTranslate", "5,5,5"}})})}});
    auto camera = QVCamera3D::cameraWithInfo(info, scene);
    camera->updateData({0});
    EXPECT_EQ(camera->x(), 0);
    EXPECT_EQ(camera->getPpTransform()[1][1], 2 / 1280.0f);  // the aspect is the scene's
}

}  // namespace
}  // namespace multiscene
