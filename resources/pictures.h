// The pictures: icon, drive images, splash. They are drawn by draw_pictures.cpp when the program is built.
#pragma once

#include "platform/toolkit_pictures.h"

namespace delvane {

CPictureBytes GetPictures();

}  // namespace delvane
