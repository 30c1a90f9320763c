#include "zorexp/parameters.hpp"

#include "zorexp/references.hpp"
#include "zorexp/runtime_defaults.hpp"

namespace d = vx_defaults;

#define VX_RUNTIME_DEFAULT(cls, op, init) \
    const VX_Value* cls::op() const { static const VX_Value value init; return &value; }
VX_RUNTIME_DEFAULT(VX_INTEGERPARAMETER, VX_DefaultVALUE, (d::kIntegerValue, 0))
VX_RUNTIME_DEFAULT(VX_INTEGERPARAMETER, VX_DefaultLOWER, (d::kIntegerLower, 0))
VX_RUNTIME_DEFAULT(VX_INTEGERPARAMETER, VX_DefaultUPPER, (d::kIntegerUpper, 0))
VX_RUNTIME_DEFAULT(VX_REALPARAMETER, VX_DefaultVALUE, (d::kRealParamValue, 0))
VX_RUNTIME_DEFAULT(VX_REALPARAMETER, VX_DefaultLOWER, (d::kRealParamLower, 0))
VX_RUNTIME_DEFAULT(VX_REALPARAMETER, VX_DefaultUPPER, (d::kRealParamUpper, 0))
VX_RUNTIME_DEFAULT(VX_REALPARAMETER, VX_DefaultPHYSICALQUANTITY, (d::kQuantity, 0))
VX_RUNTIME_DEFAULT(VX_REALPARAMETER, VX_DefaultBASEUOMNAME, (d::kBaseUnit, 0))
VX_RUNTIME_DEFAULT(VX_STRINGPARAMETER, VX_DefaultVALUE, (d::kStringValue, 0))
VX_RUNTIME_DEFAULT(VX_STRINGPARAMETER, VX_DefaultVALID, (VX_StrSetValue(), 0))
VX_RUNTIME_DEFAULT(VX_LOGICALPARAMETER, VX_DefaultVALUE, (d::kLogicalValue, 0))
#undef VX_RUNTIME_DEFAULT

int VX_REALPARAMETER::VX_PQRow() const { return d::kPQRow; }
int VX_REALPARAMETER::VX_PQCol() const { return d::kPQCol; }

void VX_INTEGERPARAMETER::InitializeSystemAttributes() {
    m_value = VX_DefaultVALUE()->IntValue();
    m_lower = VX_DefaultLOWER()->IntValue();
    m_upper = VX_DefaultUPPER()->IntValue();
}

void VX_REALPARAMETER::InitializeSystemAttributes() {
    m_value = VX_DefaultVALUE()->RealValue();
    m_lower = VX_DefaultLOWER()->RealValue();
    m_upper = VX_DefaultUPPER()->RealValue();
}

void VX_STRINGPARAMETER::InitializeSystemAttributes() { m_value = VX_DefaultVALUE()->TextValue(); }

void VX_LOGICALPARAMETER::InitializeSystemAttributes() { m_value = VX_DefaultVALUE()->LogicalValue(); }

const VX_StrSetData& VX_STRINGPARAMETER::Valid() const { return VX_DefaultVALID()->StrSet(); }

VX_INTEGERPARAMETER& VX_INTEGERPARAMETER::operator=(const VX_INTEGERPARAMETER& o) {
    VX_VarParam::operator=(o);
    m_value = o.m_value;
    m_lower = o.m_lower;
    m_upper = o.m_upper;
    return *this;
}

VX_REALPARAMETER& VX_REALPARAMETER::operator=(const VX_REALPARAMETER& o) {
    VX_VarParam::operator=(o);
    m_value = o.m_value;
    m_lower = o.m_lower;
    m_upper = o.m_upper;
    return *this;
}

VX_STRINGPARAMETER& VX_STRINGPARAMETER::operator=(const VX_STRINGPARAMETER& o) {
    VX_VarParam::operator=(o);
    m_value = o.m_value;
    return *this;
}

VX_LOGICALPARAMETER& VX_LOGICALPARAMETER::operator=(const VX_LOGICALPARAMETER& o) {
    VX_VarParam::operator=(o);
    m_value = o.m_value;
    return *this;
}

bool VX_INTEGERPARAMETER::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_IntegerParameterContainerId());
}
bool VX_REALPARAMETER::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_RealParameterContainerId());
}
bool VX_STRINGPARAMETER::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_StringParameterContainerId());
}
bool VX_LOGICALPARAMETER::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_LogicalParameterContainerId());
}
