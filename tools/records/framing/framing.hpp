#pragma once

// The way into this folder: where bytes come from and where lines go, and how an input is cut into records. Nothing
// here looks into a record.

#include "records/framing/buffersource.hpp"
#include "records/framing/detect.hpp"
#include "records/framing/errors.hpp"
#include "records/framing/fileinput.hpp"
#include "records/framing/fileoutput.hpp"
#include "records/framing/linecharacters.hpp"
#include "records/framing/recordform.hpp"
#include "records/framing/recordframer.hpp"
#include "records/framing/recordreader.hpp"
