#pragma once
// The generic bases every generated container derives from: models, streams, ports and
// structures. Each carries the component list its arrays are indexed by; a port also carries
// its connection flag.
#include "zorexp/zorexp.hpp"

// Models: unit operations and submodels.
class VX_GENERICMODEL : public VX_ModelTypeEx2 {
public:
    explicit VX_GENERICMODEL(bool constructProperties = true);
    VX_GENERICMODEL(const VX_GENERICMODEL& o);
    VX_GENERICMODEL& operator=(const VX_GENERICMODEL& o);
    ~VX_GENERICMODEL() override = default;
    void Construct();
    static const char* VX_ContainerId() { return "Model GENERICMODEL\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    VX_COMPONENTLISTNAME* ComponentList() const override { return const_cast<VX_COMPONENTLISTNAME*>(&m_componentList); }

private:
    VX_COMPONENTLISTNAME m_componentList;
};

// Streams: models that join two ports.
class VX_GENERICSTREAM : public VX_ModelTypeEx2 {
public:
    explicit VX_GENERICSTREAM(bool constructProperties = true);
    VX_GENERICSTREAM(const VX_GENERICSTREAM& o);
    VX_GENERICSTREAM& operator=(const VX_GENERICSTREAM& o);
    ~VX_GENERICSTREAM() override = default;
    void Construct();
    static const char* VX_ContainerId() { return "Model GENERICSTREAM\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    VX_COMPONENTLISTNAME* ComponentList() const override { return const_cast<VX_COMPONENTLISTNAME*>(&m_componentList); }

private:
    VX_COMPONENTLISTNAME m_componentList;
};

// Ports: connection points, members of models.
class VX_GENERICPORT : public VX_PortTypeEx {
public:
    explicit VX_GENERICPORT(bool constructProperties = true);
    VX_GENERICPORT(const VX_GENERICPORT& o);
    VX_GENERICPORT& operator=(const VX_GENERICPORT& o);
    ~VX_GENERICPORT() override = default;
    void Construct();
    static const char* VX_ContainerId() { return "Port GENERICPORT\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    VX_COMPONENTLISTNAME* ComponentList() const override { return const_cast<VX_COMPONENTLISTNAME*>(&m_componentList); }
    // True when a stream or model is joined to the port (the flag ISCONNECTED).
    bool IsConnected() const override { return m_isConnected.fv(); }
    VX_LOGICALPARAMETER& ConnectionFlag() { return m_isConnected; }
    // Host-port type given by the stream that holds the port.
    VX_HRESULT HostPortType(int type) override { m_hostPortType = type; return VX_S_OK; }
    int HostPortTypeValue() const { return m_hostPortType; }

protected:
    void MarkConnected(bool connected) override;

private:
    VX_COMPONENTLISTNAME m_componentList;
    VX_LOGICALPARAMETER m_isConnected;
    int m_hostPortType = 0;
};

// Structures: shared blocks of parameters.
class VX_GENERICSTRUCTURE : public VX_StructureTypeEx {
public:
    explicit VX_GENERICSTRUCTURE(bool constructProperties = true);
    VX_GENERICSTRUCTURE(const VX_GENERICSTRUCTURE& o);
    VX_GENERICSTRUCTURE& operator=(const VX_GENERICSTRUCTURE& o);
    ~VX_GENERICSTRUCTURE() override = default;
    void Construct();
    static const char* VX_ContainerId() { return "Structure GENERICSTRUCTURE\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    VX_COMPONENTLISTNAME* ComponentList() const override { return const_cast<VX_COMPONENTLISTNAME*>(&m_componentList); }

private:
    VX_COMPONENTLISTNAME m_componentList;
};
