#include "platform/win32/windows/pictures.h"

#include <vector>

#include "platform/win32/machine/system.h"

namespace delvane {

unsigned CDib::GetColourCount() const {
    const BITMAPINFOHEADER& header = GetInfo()->bmiHeader;
    if (header.biClrUsed != 0) return header.biClrUsed;
    return header.biBitCount <= 8 ? 1U << header.biBitCount : 0;
}

const char* CDib::GetPixels() const {
    return m_bytes.data() + GetInfo()->bmiHeader.biSize + GetColourCount() * sizeof(RGBQUAD);
}

HPALETTE CDib::MakePalette() const {
    constexpr WORD kVersion = 0x300;
    const unsigned count = GetColourCount();
    if (count == 0) return nullptr;
    std::vector<char> room(sizeof(LOGPALETTE) + count * sizeof(PALETTEENTRY));
    auto* const palette = reinterpret_cast<LOGPALETTE*>(room.data());
    palette->palVersion = kVersion;
    palette->palNumEntries = static_cast<WORD>(count);
    const RGBQUAD* const colours = GetInfo()->bmiColors;
    for (unsigned i = 0; i < count; ++i)
        palette->palPalEntry[i] = {colours[i].rgbRed, colours[i].rgbGreen, colours[i].rgbBlue, 0};
    return CreatePalette(palette);
}

void CDib::StretchTo(HBITMAP bitmap, int factor) const {
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    SetStretchBltMode(memory, COLORONCOLOR);
    StretchDIBits(memory, 0, 0, GetWidth() * factor, GetHeight() * factor, 0, 0, GetWidth(), GetHeight(), GetPixels(),
                  GetInfo(), DIB_RGB_COLORS, SRCCOPY);
    SelectObject(memory, before);
    DeleteDC(memory);
}

HMODULE GetCommonControls() {
    static const HMODULE library = LoadLibraryW(L"comctl32.dll");  // the version that the manifest names
    return library;
}

void DestroyImages(HIMAGELIST images) {
    static auto* const destroy = FindOperation<decltype(ImageList_Destroy)>(GetCommonControls(), "ImageList_Destroy");
    if (images != nullptr && destroy != nullptr) destroy(images);
}

HIMAGELIST MakeDriveImages(const CPictureBytes& pictures, int factor) {
    static auto* const create = FindOperation<decltype(ImageList_Create)>(GetCommonControls(), "ImageList_Create");
    static auto* const add = FindOperation<decltype(ImageList_Add)>(GetCommonControls(), "ImageList_Add");
    if (create == nullptr || add == nullptr) return nullptr;
    constexpr int kImageWidth = 16;
    const CDib drives(pictures.m_drives);
    const CDib mask(pictures.m_driveMask);
    const int width = drives.GetWidth() * factor;
    const int height = drives.GetHeight() * factor;
    const HDC screen = GetDC(nullptr);
    const HBITMAP colours = CreateCompatibleBitmap(screen, width, height);
    ReleaseDC(nullptr, screen);
    const HBITMAP transparent = CreateBitmap(width, height, 1, 1, nullptr);
    drives.StretchTo(colours, factor);
    mask.StretchTo(transparent, factor);
    const HIMAGELIST images =
        create(kImageWidth * factor, height, ILC_COLOR24 | ILC_MASK, drives.GetWidth() / kImageWidth, 0);
    add(images, colours, transparent);
    DeleteObject(colours);
    DeleteObject(transparent);
    return images;
}

HICON LoadProgramIcon(int size) {
    constexpr WORD kIcon = 128;
    return static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kIcon), IMAGE_ICON, size, size, LR_SHARED));
}

}  // namespace delvane
