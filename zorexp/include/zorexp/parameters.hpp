#pragma once
// Parameters: integer, real, string (option) and logical. Each root reads its defaults from
// virtual operations that the generated parameter types override.
#include <string>

#include "zorexp/varparam.hpp"

class VX_INTEGERPARAMETER : public VX_VarParam {
public:
    explicit VX_INTEGERPARAMETER(bool initialize = true) : VX_VarParam(IntegerParameter) {
        if (initialize) InitializeSystemAttributes();
    }
    VX_INTEGERPARAMETER(const VX_INTEGERPARAMETER&) = default;
    VX_INTEGERPARAMETER& operator=(const VX_INTEGERPARAMETER& o);
    VX_INTEGERPARAMETER& operator*() { return *this; }
    // Every parameter of this kind, whatever its type, answers to the kind's container id.
    bool ContainerDerivesFrom(const char* id) const override;

    virtual const VX_Value* VX_DefaultVALUE() const;
    virtual const VX_Value* VX_DefaultLOWER() const;
    virtual const VX_Value* VX_DefaultUPPER() const;

    void InitializeSystemAttributes();
    int v() const { RecordRead(); return m_value; }
    int fv() const { return m_value; }
    int Lower() const { return m_lower; }
    int Upper() const { return m_upper; }

private:
    int m_value = 0;
    int m_lower = 0;
    int m_upper = 0;
    friend class VX_VarParam;
};

class VX_REALPARAMETER : public VX_VarParam {
public:
    explicit VX_REALPARAMETER(bool initialize = true) : VX_VarParam(RealParameter) {
        if (initialize) InitializeSystemAttributes();
    }
    VX_REALPARAMETER(const VX_REALPARAMETER&) = default;
    VX_REALPARAMETER& operator=(const VX_REALPARAMETER& o);
    VX_REALPARAMETER& operator*() { return *this; }
    // Every parameter of this kind, whatever its type, answers to the kind's container id.
    bool ContainerDerivesFrom(const char* id) const override;

    virtual const VX_Value* VX_DefaultVALUE() const;
    virtual const VX_Value* VX_DefaultLOWER() const;
    virtual const VX_Value* VX_DefaultUPPER() const;
    virtual const VX_Value* VX_DefaultPHYSICALQUANTITY() const;
    virtual const VX_Value* VX_DefaultBASEUOMNAME() const;
    virtual int VX_PQRow() const;
    virtual int VX_PQCol() const;

    void InitializeSystemAttributes();
    double v() const { RecordRead(); return m_value; }
    double fv() const { return m_value; }
    double Lower() const { return m_lower; }
    double Upper() const { return m_upper; }

private:
    double m_value = 0.0;
    double m_lower = 0.0;
    double m_upper = 0.0;
    friend class VX_VarParam;
};

class VX_STRINGPARAMETER : public VX_VarParam {
public:
    explicit VX_STRINGPARAMETER(bool initialize = true) : VX_VarParam(StringParameter) {
        if (initialize) InitializeSystemAttributes();
    }
    VX_STRINGPARAMETER(const VX_STRINGPARAMETER&) = default;
    VX_STRINGPARAMETER& operator=(const VX_STRINGPARAMETER& o);
    VX_STRINGPARAMETER& operator*() { return *this; }
    // Every parameter of this kind, whatever its type, answers to the kind's container id.
    bool ContainerDerivesFrom(const char* id) const override;

    virtual const VX_Value* VX_DefaultVALUE() const;
    virtual const VX_Value* VX_DefaultVALID() const;

    void InitializeSystemAttributes();
    const char* v() const { RecordRead(); return m_value.c_str(); }
    const char* fv() const { return m_value.c_str(); }
    operator const char*() const { return m_value.c_str(); }
    // The valid values; empty when any value is accepted.
    const VX_StrSetData& Valid() const;

private:
    std::string m_value;
    friend class VX_VarParam;
};

class VX_LOGICALPARAMETER : public VX_VarParam {
public:
    explicit VX_LOGICALPARAMETER(bool initialize = true) : VX_VarParam(LogicalParameter) {
        if (initialize) InitializeSystemAttributes();
    }
    VX_LOGICALPARAMETER(const VX_LOGICALPARAMETER&) = default;
    VX_LOGICALPARAMETER& operator=(const VX_LOGICALPARAMETER& o);
    VX_LOGICALPARAMETER& operator*() { return *this; }
    // Every parameter of this kind, whatever its type, answers to the kind's container id.
    bool ContainerDerivesFrom(const char* id) const override;

    virtual const VX_Value* VX_DefaultVALUE() const;

    void InitializeSystemAttributes();
    bool v() const { RecordRead(); return m_value; }
    bool fv() const { return m_value; }

private:
    bool m_value = false;
    friend class VX_VarParam;
};
