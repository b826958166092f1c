#include "platform/win32/windows/pictures.h"

#include <vector>

#include "platform/win32/machine/system.h"

namespace delvane {

CDib::CDib(WORD number) {
    constexpr WORD kBitmap = 2;  // RT_BITMAP
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(number), MAKEINTRESOURCEW(kBitmap));
    m_pInfo = found == nullptr ? nullptr : static_cast<const BITMAPINFO*>(LockResource(LoadResource(nullptr, found)));
}

unsigned CDib::GetColourCount() const {
    const BITMAPINFOHEADER& header = m_pInfo->bmiHeader;
    if (header.biClrUsed != 0) return header.biClrUsed;
    return header.biBitCount <= 8 ? 1U << header.biBitCount : 0;
}

HPALETTE CDib::MakePalette() const {
    constexpr WORD kVersion = 0x300;
    const unsigned count = GetColourCount();
    if (count == 0) return nullptr;
    std::vector<char> room(sizeof(LOGPALETTE) + count * sizeof(PALETTEENTRY));
    auto* const palette = reinterpret_cast<LOGPALETTE*>(room.data());
    palette->palVersion = kVersion;
    palette->palNumEntries = static_cast<WORD>(count);
    const RGBQUAD* const colours = m_pInfo->bmiColors;
    for (unsigned i = 0; i < count; ++i)
        palette->palPalEntry[i] = {colours[i].rgbRed, colours[i].rgbGreen, colours[i].rgbBlue, 0};
    return CreatePalette(palette);
}

void CDib::StretchTo(HDC context, int width, int height) const {
    // A small drawing grows by whole dots; what is drawn with soft edges keeps them.
    const bool isWhole = width % GetWidth() == 0 && height % GetHeight() == 0;
    SetStretchBltMode(context, isWhole ? COLORONCOLOR : HALFTONE);
    SetBrushOrgEx(context, 0, 0, nullptr);
    StretchDIBits(context, 0, 0, width, height, 0, 0, GetWidth(), GetHeight(), GetPixels(), m_pInfo, DIB_RGB_COLORS,
                  SRCCOPY);
}

HMODULE GetCommonControls() {
    static const HMODULE library = LoadLibraryW(L"comctl32.dll");  // the version that the manifest names
    return library;
}

void DestroyImages(HIMAGELIST images) {
    static auto* const destroy = FindOperation<decltype(ImageList_Destroy)>(GetCommonControls(), "ImageList_Destroy");
    if (images != nullptr && destroy != nullptr) destroy(images);
}

HIMAGELIST MakeDriveImages(int factor) {
    static auto* const create = FindOperation<decltype(ImageList_Create)>(GetCommonControls(), "ImageList_Create");
    static auto* const add = FindOperation<decltype(ImageList_Add)>(GetCommonControls(), "ImageList_Add");
    const CDib drives(kDrivesBitmap);
    const CDib mask(kDriveMaskBitmap);
    if (create == nullptr || add == nullptr || !drives || !mask) return nullptr;
    constexpr int kImageWidth = 16;
    const int width = drives.GetWidth() * factor;
    const int height = drives.GetHeight() * factor;
    const HDC screen = GetDC(nullptr);
    const HBITMAP colours = CreateCompatibleBitmap(screen, width, height);
    ReleaseDC(nullptr, screen);
    const HBITMAP transparent = CreateBitmap(width, height, 1, 1, nullptr);
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ before = SelectObject(memory, colours);
    drives.StretchTo(memory, width, height);
    SelectObject(memory, transparent);
    mask.StretchTo(memory, width, height);
    SelectObject(memory, before);
    DeleteDC(memory);
    const HIMAGELIST images =
        create(kImageWidth * factor, height, ILC_COLOR24 | ILC_MASK, drives.GetWidth() / kImageWidth, 0);
    add(images, colours, transparent);
    DeleteObject(colours);
    DeleteObject(transparent);
    return images;
}

HICON LoadProgramIcon(int size) {
    return static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kProgramIcon), IMAGE_ICON, size, size, LR_SHARED));
}

}  // namespace delvane
