#pragma once

// What the programs need of record files: a copybook becomes a layout, a layout a plan, and a worker that follows the
// plan turns each record into events, which a handler writes as a JSON line. A program brings the input (a file, or a
// BufferSource of its own), decides on faults as FaultListener, and takes the lines.
//
// Example:
//   const Layout layout = readCopybookFile("customers.cob");
//   const RecordPlan plan(layout, {});
//   const auto worker = RecordWorker::make(plan, RecordWorker::Settings{}, listener);
//   JsonHandler json(plan.names(), {});
//   worker->initializeParse(-1, nullptr, -1);
//   worker->setFIHandler(&json, false);
//   worker->parse(&buffer, nullptr, 0, -1);
//   send(json.lines());

#include "records/checkedparts.hpp"
#include "records/copybook/copybook.hpp"
#include "records/csv/csv.hpp"
#include "records/fields/fields.hpp"
#include "records/framing/framing.hpp"
#include "records/json/json.hpp"
#include "records/json/lines.hpp"
#include "records/json/reader.hpp"
#include "records/layout.hpp"
#include "records/linehandler.hpp"
#include "records/recordhandler.hpp"
#include "records/recordplan.hpp"
#include "records/recordworker.hpp"
