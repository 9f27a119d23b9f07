#include "MekExceptions.h"

namespace tavo {

EMekException::EMekException(String Message)
    : FMessage(std::move(Message)), FUtf8(StringToUtf8(FMessage)) {}

}  // namespace tavo
