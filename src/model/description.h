#pragma once

#include <string>

namespace mqf2vxb {

/// A component file as the MQF file names it.
struct ComponentFile {
    std::string fileName;
    bool given = false;
};

/// The component files of one model. The images and motions that the MQF file lists are tables of
/// their own.
struct ModelDescription {
    std::string fileName;  ///< of the MQF file itself
    ComponentFile geo;
    ComponentFile srf;
    ComponentFile sqd;  ///< recorded only: the group file that is read is the FRM file's
    ComponentFile axs;
    ComponentFile frm;
    ComponentFile bnd;
};

}  // namespace mqf2vxb
