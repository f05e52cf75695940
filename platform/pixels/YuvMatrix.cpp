#include "platform/pixels/YuvMatrix.h"

namespace platform {

YuvMatrix yuvMatrixFor(int width, int height) {
    return width >= 720 || height >= 720 ? YuvMatrix::BT709 : YuvMatrix::BT601;
}

}  // namespace platform
