#pragma once

#include <string>

#include "files/inputs.h"
#include "model/material.h"

namespace mqf2vxb {

/// The most material records that the ranges of one SRF file may name: a few characters can ask
/// for billions.
inline constexpr std::size_t mostMaterials = std::size_t{1} << 24U;

/// Reads the materials: one record per polygon named, in the order of the file.
void readMaterials(Inputs& inputs, const std::string& fileName, MaterialTable& materials);

}  // namespace mqf2vxb
