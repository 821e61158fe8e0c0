#pragma once

#include "model/reference/Machine.h"

namespace Reference {

/// The record that serves a device: its own, or for a pair that of a member; null when there is
/// none.
NodePtr policyList(const NodePtr& status, const Text& deviceName);

class PolicyRoot final : public Machine {
 public:
  PolicyRoot(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;
  void handlePolicySet(const Text& deviceName);
  void handlePolicySet();

 private:
  void childIs(const Text& deviceName, const NodePtr& setV1, const NodePtr& setV2,
               const NodePtr& list);
};

class PolicyDevice final : public Machine {
 public:
  PolicyDevice(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;
  void handleVrf(const Text& vrfName);
  void handleVrf();

 private:
  void childIs(const Text& vrfName, const Text& net, const NodePtr& policyV1,
               const NodePtr& policyV2);
};

class PolicyVrf final : public Machine {
 public:
  PolicyVrf(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;
  void handleRule(const Text& priority);
  void handleRule();
  void doUpdate();
  void cookieIs(const CookiePtr& value);
  void initializedIs(bool value);
  void initCompleteIs(bool value);
  void childDel(const Text& priority) override;

 private:
  void childIs(const Text& priority, const NodePtr& ruleV1, const NodePtr& ruleV2,
               const CookiePtr& chosen);
};

class PolicyRule final : public Machine {
 public:
  PolicyRule(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;
  void handleOrigin(const Text& origin);
  void handleOrigin();

 private:
  void childIs(const Text& origin, const NodePtr& originV1, const NodePtr& originV2);
};

class PolicyOrigin final : public Machine {
 public:
  PolicyOrigin(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;
  void handleTags();
  void handleLog();
  void handleAction();
  void handleMatch();
  void childDel(const Text& which) override;
  void childDelAll() override;
  void handleModifier(const Text& modifier);
  void handleModifier();

 private:
  void checkOrdinal(const Text& value, std::initializer_list<const char*> known);
};

class PolicyMatch final : public Machine {
 public:
  PolicyMatch(World& world, Given given);
  const Forms& forms() const override;
  void cleanup() override;
  void handleInitialized() override;

  /// What differs between the seven sets.
  struct Criterion {
    int id;
    const char* keyed;
    const char* whole;
    const char* add;     ///< null: no line per entry
    const char* remove;  ///< null: no line per entry
    int walkLevel;       ///< of the lines per entry of the walk
  };

 private:
  void handle(const Criterion& criterion, const Text& entry);
  void handle(const Criterion& criterion);
};

}  // namespace Reference
