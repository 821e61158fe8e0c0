#pragma once

#include "model/reference/Machine.h"

namespace Reference {

class ServiceRoot final : public Machine {
 public:
  ServiceRoot(World& world, Given given);
  const Forms& forms() const override;
  bool dispatchIsSealed() const override { return true; }
  void cleanup() override;
  void handleInitialized() override;
  void handleDevice(const Text& deviceName);
  void handleDevice();

 private:
  void childIs(const Text& deviceName, const NodePtr& deviceV1, const NodePtr& deviceV2,
               const NodePtr& list);
};

class ServiceDevice final : public Machine {
 public:
  ServiceDevice(World& world, Given given);
  const Forms& forms() const override;
  bool endsMarked() const override { return true; }
  bool dispatchIsSealed() const override { return true; }
  void cleanup() override;
  void handleInitialized() override;
  void handleVrf(const Text& vrfName);
  void handleVrf();
  void handleTrafficInspection();

 private:
  void childIs(const Text& vrfName, const Text& net, const NodePtr& vrfV1, const NodePtr& vrfV2);
};

class ServiceVrf final : public Machine {
 public:
  ServiceVrf(World& world, Given given);
  const Forms& forms() const override;
  bool endsMarked() const override { return true; }
  bool dispatchIsSealed() const override { return true; }
  bool endsSwitchedOff() const override { return false; }
  void cleanup() override;
  void handleInitialized() override;
  void handleL3Intf(const Text& address);
  void handleL3Intf();
  void doUpdate();
  void cookieIs(const CookiePtr& value);
  void initializedIs(bool value);
  void initCompleteIs(bool value);

 private:
  void childIs(const Text& address, const NodePtr& intfV1, const NodePtr& intfV2);
};

class ServiceIntf final : public Machine {
 public:
  ServiceIntf(World& world, Given given);
  const Forms& forms() const override;
  bool endsMarked() const override { return true; }
  bool dispatchIsSealed() const override { return true; }
  void cleanup() override;
  void handleInitialized() override;
  void handleSubnet(const Text& subnet);
  void handleSubnet();
};

}  // namespace Reference
