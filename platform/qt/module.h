// What the program and its Qt module have to do with each other. The module is loaded by name; nothing of either is
// linked to the other.
#pragma once

#include <QtGui/QIcon>
#include <QtGui/QImage>
#include <QtGui/QPixmap>

#include "platform/toolkit_pictures.h"

namespace delvane {

// The program's pictures, in Qt's form.
class CPictures {
public:
    explicit CPictures(const CPictureBytes& bytes);

    QPixmap GetDrive(std::uint32_t kind) const;  // of the image strip; empty for a number that has none
    const QImage& GetSplash() const { return m_splash; }
    const QIcon& GetIcon() const { return m_icon; }

private:
    QImage m_drives;
    QImage m_splash;
    QIcon m_icon;
};

}  // namespace delvane
