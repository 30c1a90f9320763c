#include "zorexp/variable.hpp"

#include "zorexp/runtime_defaults.hpp"
#include "zorexp/references.hpp"
#include "zorexp/session.hpp"

namespace d = vx_defaults;

// Arrays hold one variable object per element; the small-object pool rounds sizes up to 16
// bytes, so one more field would cost every element 16 bytes.
static_assert(sizeof(VX_REALVARIABLE) <= 80, "a variable outgrew its 80-byte pool class");

int VX_Variable::VX_PQCol() const { return d::kPQCol; }
int VX_Variable::VX_PQRow() const { return d::kPQRow; }

#define VX_RUNTIME_DEFAULT(op, init) \
    const VX_Value* VX_Variable::op() const { static const VX_Value value init; return &value; }
VX_RUNTIME_DEFAULT(VX_DefaultDERIVATIVE, (d::kVariableDerivative, 0))
VX_RUNTIME_DEFAULT(VX_DefaultSPEC, (VX_SPEC_FREE, 0))
VX_RUNTIME_DEFAULT(VX_DefaultVALUE, (d::kVariableValue, 0))
VX_RUNTIME_DEFAULT(VX_DefaultDIRECTION, (0, 0))
VX_RUNTIME_DEFAULT(VX_DefaultISCONNECTED, (false, 0))
VX_RUNTIME_DEFAULT(VX_DefaultISMATCHED, (false, 0))
VX_RUNTIME_DEFAULT(VX_DefaultLLAGRANGE, (0.0, 0))
VX_RUNTIME_DEFAULT(VX_DefaultLOWER, (d::kVariableLower, 0))
VX_RUNTIME_DEFAULT(VX_DefaultPHYSICALQUANTITY, (d::kQuantity, 0))
VX_RUNTIME_DEFAULT(VX_DefaultBASEUOMNAME, (d::kBaseUnit, 0))
VX_RUNTIME_DEFAULT(VX_DefaultRECORD, (false, 0))
VX_RUNTIME_DEFAULT(VX_DefaultSCALE, (d::kVariableScale, 0))
VX_RUNTIME_DEFAULT(VX_DefaultTAG, ("", 0))
VX_RUNTIME_DEFAULT(VX_DefaultULAGRANGE, (0.0, 0))
VX_RUNTIME_DEFAULT(VX_DefaultUNITS, ("", 0))
VX_RUNTIME_DEFAULT(VX_DefaultUPPER, (d::kVariableUpper, 0))
VX_RUNTIME_DEFAULT(VX_DefaultISCONNECTEDASOUTPUT, (false, 0))
VX_RUNTIME_DEFAULT(VX_DefaultINTEGERPHYSICALQUANTITY, (0, 0))
#undef VX_RUNTIME_DEFAULT

VX_Variable::~VX_Variable() = default;

void VX_Variable::InitializeSystemAttributes() {
    *m_slot = VX_DefaultVALUE()->RealValue();
    m_lower = VX_DefaultLOWER()->RealValue();
    m_upper = VX_DefaultUPPER()->RealValue();
    m_spec = static_cast<std::int8_t>(VX_DefaultSPEC()->IntValue());
    if (VX_DefaultRECORD()->LogicalValue()) m_attrFlags |= 1u << (VX_ATTR_RECORD - VX_ATTR_RECORD);
}

VX_Variable& VX_Variable::operator=(const VX_Variable& o) {
    VX_VarParam::operator=(o);
    *m_slot = o.fv();
    m_lower = o.m_lower;
    m_upper = o.m_upper;
    return *this;
}

bool VX_Variable::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_RealVariableContainerId());
}
