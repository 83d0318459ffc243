// What every room is built from: the services, all fields to read, the gate, the messages, the arrows out.
#pragma once

#include "core/logging/logging_service.h"
#include "workflow/crossings.h"
#include "workflow/operation_gate.h"
#include "workflow/user_messages.h"
#include "workflow/workflow_services.h"

namespace corvane {

struct RoomContext {
  const WorkflowServices& services;
  const StatusFields& fields;
  OperationGate& gate;
  UserMessages& messages;
  Crossings& crossings;
  Logger log;  // the workflow's own: "StatusViewModel: "
};

}  // namespace corvane
