#pragma once

#include <array>

#include "zelv/interfaces/GUID.h"

namespace Zelv {

/// Identifiers that are taken but bound to no interface; a new interface MUST NOT use one of them.
std::array<GUID, 9> const RESERVED_IDENTIFIERS{
    GUID("198c646c-bd6f-47ad-a0b3-c9d2c12350ee"), GUID("68282f57-cae9-4385-9ff5-bbfa62026053"),
    GUID("0b5d085b-54da-4aa0-915f-8ecf82c21450"), GUID("1b999b0d-bd8d-4cca-af29-29e208cb5e5f"),
    GUID("3b0d5bec-bd77-4d4e-872e-1a867c5d15d7"), GUID("0d447f57-4f93-4c8a-841f-dfd4ba6cd2fb"),
    GUID("dbfcc88b-1f56-4798-b573-869a65f1bbdc"), GUID("ae7c4fcf-5aca-4a50-9494-c6dca86d4316"),
    GUID("518cbbfc-ccaf-488b-879a-ed4aaa0c0f36")};

}  // namespace Zelv
