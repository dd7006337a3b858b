// Machines from text: the settings that a machine has, each a name and a value.
#ifndef QRN_SIM_MACHINE_MACHINE_WORDS_H_
#define QRN_SIM_MACHINE_MACHINE_WORDS_H_

#include <string>

#include "sim/machine/machine.h"

namespace qrn::sim {

// Sets what is named, such as "heads" to "pha" or "ink_order_pha" to "7,6,5,4,3,2,1,0"; a setting
// by resolution takes one number or four. Returns why it cannot, beginning with the setting's name,
// or "".
std::string SetMachine(const std::string& name, const std::string& value, Machine* machine);

}  // namespace qrn::sim

#endif  // QRN_SIM_MACHINE_MACHINE_WORDS_H_
