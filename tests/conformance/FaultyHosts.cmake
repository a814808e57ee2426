# One host for each mistake: name, rules that the mistake breaks, file of the sample host, good text, bad text.

# Definitions of the program take the place of those of topo_host_defaults.
set(include_host "#include \"Host.h\"\n")
faulty_host(does_not_list_service_objects bundle.constructor Registration.cpp "${include_host}"
  "${include_host}#include \"platform/bundlemgr/BundleMgr.h\"\nvoid NS_BUNDLEMGR1::ServiceObjectBase::RegistSvc() {}\n")
faulty_host(keeps_interfaces bundle.base Registration.cpp "${include_host}"
  "${include_host}#include \"platform/bundlemgr/BundleMgr.h\"\nvoid NS_BUNDLEMGR1::ServiceObjectBase::RemoveInterface() {}\n")
faulty_host(reads_no_numbers texts.numbers Registration.cpp "${include_host}"
  "${include_host}#include \"platform/util/UtilCommon.h\"\nint NS_UTIL::Str2Int(const std::string&) { return 0; }\n")

faulty_host(publishes_no_naming bundle.interfaces Naming.cpp
  "NS_BUNDLEMGR1::SetIFBuf(\"CorbaUtilInterface\", &naming);" "")

faulty_host(raises_for_a_malformed_name "naming.raises-nothing names.malformed" Naming.cpp
  "!= host::kEmsName) return kInvalid;" "!= host::kEmsName) throw ProcessException();")
faulty_host(calls_every_name_a_subnetwork "naming.types names.known names.unknown" Naming.cpp
  "&& host::hasSubnetwork(id) ? kTopoSubnetworkType" "? kTopoSubnetworkType")
faulty_host(keeps_a_stale_name naming.cleared Naming.cpp
  "name.length(id.empty() ? 0 : 2);\n  if (name.length() == 0) return kInvalid;"
  "if (id.empty()) return kInvalid;\n  name.length(2);")
faulty_host(stores_texts_that_are_not_utf8 views.records Domain.cpp "\"München\"" "\"M\\xfc\" \"nchen\"")
faulty_host(sorts_elements_wrongly domain.elements Domain.cpp
  "for (const NEIndex& index : indexes)"
  "for (const NEIndex& index : std::vector<NEIndex>(indexes.rbegin(), indexes.rend()))")

set(throw "${include_host}#include \"platform/agent/Failures.h\"\nvoid NS_CORBA::ThrowException(CORBA::ULong code, const std::string& text) {\n  globaldefs::ProcessingFailureException failure;\n  ConstructException(code, failure);\n")
faulty_host(raises_a_platform_exception_for_codes failures.type Registration.cpp "${include_host}"
  "${throw}if (code != 0) throw ProcessException();\n}\n")
faulty_host(raises_for_success failures.success Registration.cpp "${include_host}" "${throw}throw failure;\n}\n")
faulty_host(ignores_the_text_of_a_failure failures.text Registration.cpp "${include_host}"
  "${throw}if (code != 0) throw failure;\n}\n")

faulty_host(accepts_a_name_in_use registration.twice Registration.cpp
  "if (!factories.emplace(name, factory).second) fail(\"the name of a manager is in use\");"
  "factories[name] = factory;")
faulty_host(crashes_for_a_null_servant registration.null Registration.cpp
  "if (servant == nullptr) fail(\"there is no servant\");" "if (servant == nullptr) abort();")
faulty_host(leaks_servants registration.reference Registration.cpp
  "const PortableServer::ServantBase_var owned = servant;" "")

faulty_host(does_not_wait_for_a_handler event.unsubscribe-waits Events.cpp
  "wait([&] { return running_ != handler; });" "")
faulty_host(keeps_subscriptions event.unsubscribe-ends Events.cpp
  "change([&] { subscriptions_.erase({eventId, handler}); });" "")
faulty_host(reports_a_deletion_as_a_change event.contents Domain.cpp
  "raiseEvent(EVENT_TOPO_NODE_DELETED" "raiseEvent(EVENT_TOPO_NODE_CHANGED")
faulty_host(keeps_handlers_of_a_failed_init reload.failed-init main.cpp "${include_host}"
  "${include_host}#include \"ace/DLL_Manager.h\"\n#include \"ace/Service_Config.h\"\nvoid host_defaults::ModuleFile::unload() noexcept {\n  ACE_Service_Config::process_directive(\"remove zu_corba_topo\");\n  if (state_ == State::kFailed) ACE_DLL_Manager::instance()->close_dll(path_.c_str());\n  state_ = State::kUnloaded;\n}\n")
faulty_host(never_unmaps_the_module reload.mapped main.cpp "${include_host}"
  "${include_host}host_defaults::ModuleFile::ModuleFile() {}\n")

faulty_host(shares_the_log_position log.position Registration.cpp "${include_host}"
  "${include_host}#include \"platform/agent/Logging.h\"\nNS_CORBA::LogPosition* NS_CORBA::GetTss() {\nstatic LogPosition position;\nreturn &position;\n}\n")
faulty_host(never_ends_iterators "iterators.last-batch iterators.destroy iterator.life" Iterators.cpp "module.iteratorPoa()->deactivate_object" "(void)")
faulty_host(lacks_a_function link.symbols Attributes.cpp "CORBA::ULong TECommonFunc::resetObject("
  "CORBA::ULong unused(")
faulty_host(hangs_in_reset attributes.raise-nothing Attributes.cpp
  "CORBA::ULong TECommonFunc::resetObject(const NVSList_T&) {"
  "CORBA::ULong TECommonFunc::resetObject(const NVSList_T&) { for (;;) pause();")

# Each ORB has an option of its own for the code set: 0x05010001 is UTF-8 too, and 0x00010001 is ISO 8859-1.
file(READ "${PROJECT_SOURCE_DIR}/orb/${TOPO_ORB}/include/orb/hostorb.h" start_orb)
string(REPLACE "\"UTF-8\"" "\"ISO-8859-1\"" start_orb "${start_orb}")
string(REPLACE "Codeset 0x05010001" "Codeset 0x00010001" start_orb "${start_orb}")
faulty_host(garbles_texts texts.utf8 main.cpp "#include \"orb/hostorb.h\"\n" "${start_orb}")
faulty_host(keeps_the_manager unload.servants Registration.cpp
  "const PortableServer::ServantBase_var owned = servant;"
  "static PortableServer::ServantBase_var owned;\n  owned = servant;")
faulty_host(keeps_iterators "unload.iterators iterator.life" Iterators.cpp "servant->_remove_ref();" "")
faulty_host(ends_with_a_failure host.end main.cpp
  "if (verb == \"load\")" "if (verb == \"quit\") _exit(3);\n  if (verb == \"load\")")

faulty_host(ends_without_fini unload.fini main.cpp
  "if (verb == \"load\")" "if (verb == \"quit\") _exit(0);\n  if (verb == \"load\")")

faulty_host(replaces_results domain.appends Domain.cpp
  "result->Value().insert(" "result->Value().clear();\n    result->Value().insert(")
faulty_host(replaces_elements domain.appends Domain.cpp
  "for (const NEIndex& index : indexes)" "elements->Value().clear();\n    for (const NEIndex& index : indexes)")
faulty_host(has_a_cycle_of_parents domain.parents Domain.cpp
  "makeNode(\"Europe\", kPhysicalRoot," "makeNode(\"Europe\", \"muc\",")
faulty_host(has_a_node_with_the_id_0 domain.parents Domain.cpp "makeNode(\"OS=3\"," "makeNode(\"0\",")
faulty_host(makes_records_of_unknown_elements domain.elements Domain.cpp
  "if (index.number == 1 || index.number == 4)" "")
faulty_host(shows_an_unknown_element domain.shown Domain.cpp "push_back({0, 1})" "push_back({0, shown ? 9 : 1})")

faulty_host(names_elements_as_subnetworks naming.elements Naming.cpp
  "\"ManagedElement\", key" "\"TopoSubnetwork\", key")
faulty_host(names_systems_as_elements naming.others Naming.cpp
  "\"OS\", number" "\"ManagedElement\", number")
faulty_host(refuses_the_root_marker naming.roots Naming.cpp
  "return setName(name, \"TopoSubnetwork\", id);"
  "return setName(name, \"TopoSubnetwork\", id[0] == 'Q' ? \"\" : id);")
faulty_host(returns_another_id naming.subnetworks Naming.cpp "? value :" "? value + '2' :")
faulty_host(raises_for_a_negative_number naming.numbers Naming.cpp
  "if (name.length() == 0) return kInvalid;" "if (name.length() == 0) throw ProcessException();")

set(include_attributes "#include \"platform/agent/TECommonFunc.h\"\n")
set(capabilities "void NS_CORBA::TECommonFunc::onGetCapabilities(common::CapabilityList_T_out capabilities,\n    const std::vector<std::string>& some, const std::vector<std::string>& others) {\n  std::vector<std::string> all(some);\n  all.insert(all.end(), others.begin(), others.end());\n  auto* list = new common::CapabilityList_T;\n  list->length(all.size());\n  for (CORBA::ULong i = 0; i < all.size(); ++i) {\n    (*list)[i].name = CORBA::string_dup(all[i].c_str());\n")
set(end_capabilities "  }\n  capabilities = list;\n}\n")
faulty_host(stores_labels_of_unknown_objects "attributes.names names.setters" Attributes.cpp
  "onSetOwner(const NVSList_T&, const char*) { return kNo; }" "onSetOwner(const NVSList_T&, const char*) { return 0; }")
faulty_host(writes_capabilities_in_lower_case attributes.operations Attributes.cpp "${include_attributes}"
  "${include_attributes}${capabilities}      (*list)[i].value = CORBA::string_dup(\"supported\");${end_capabilities}")
faulty_host(sends_no_record events.created Notifications.cpp
  "edge, nullptr, &object);" "edge, nullptr, nullptr);")
faulty_host(finds_no_classes texts.class Registration.cpp "${include_host}"
  "${include_host}#include \"platform/util/UtilCommon.h\"\nstd::string NS_UTIL::UtilCommon::GetMoc(const std::string&) { return \"\"; }\n")

faulty_host(answers_late "" main.cpp
  "std::cout << host.answer(line) << std::endl;"
  "const std::string text = host.answer(line); sleep(line == \"change conformance change\" ? 4 : 0); std::cout << text << std::endl;")

faulty_host(sends_every_notification_twice "events.created events.changed events.deleted reload.events" Notifications.cpp
  "consumer->push_structured_event(event);"
  "consumer->push_structured_event(event); consumer->push_structured_event(event);")

faulty_host(formats_the_time_otherwise events.layout Notifications.cpp "%Y%m%d%H%M%S.0Z" "%Y-%m-%d")
faulty_host(sends_another_object_type events.layout Notifications.cpp
  "kObjectType) <<= typeOf(name)" "kObjectType) <<= notifications::OT_AID")
faulty_host(leaves_out_a_field events.layout Notifications.cpp "addField(event, kNeTime) <<= \"\";" "")
faulty_host(accepts_a_label_in_use attributes.user-label Attributes.cpp
  "onSetUserLabel(const NVSList_T&, const char*, bool) { return kNo; }"
  "onSetUserLabel(const NVSList_T&, const char*, bool) { return 0; }")
set(set_information "onSetAdditionalInfo(const NVSList_T&, NVSList_T&, std::string& text) {\n  text = \"this host stores no additional information\";\n  return kNo;")
faulty_host(changes_additional_information attributes.additional-info Attributes.cpp "${set_information}"
  "onSetAdditionalInfo(const NVSList_T&, NVSList_T& info, std::string&) {\n  info[0].value = CORBA::string_dup(\"other\");\n  return 0;")
faulty_host(shows_a_node_twice views.unique Domain.cpp
  "nodes.begin(), nodes.end());\n  }" "nodes.begin(), nodes.end());\n    result->Value().push_back(nodes.back());\n  }")
faulty_host(has_a_manager_for_one_load reload.reference main.cpp "${include_host}"
  "${include_host}void host_defaults::Module::load(const std::string& path, PortableServer::POA_ptr root) try {\n  CORBA::PolicyList policies(1);\n  iteratorPoa_ = root->create_POA(\"iterators\", PortableServer::POAManager::_nil(), policies);\n  policies.length(1);\n  policies[0] = root->create_id_assignment_policy(PortableServer::USER_ID);\n  managerPoa_ = root->create_POA(\"managers\", PortableServer::POAManager::_nil(), policies);\n  for (auto* poa : {iteratorPoa_.in(), managerPoa_.in()})\n    PortableServer::POAManager_var(poa->the_POAManager())->activate();\n  file_.load(path);\n} catch (...) {\n  unload();\n  throw;\n}\n")
faulty_host(keeps_the_library_of_a_failed_init reload.failed-init-mapped main.cpp "${include_host}"
  "${include_host}#include \"ace/Service_Config.h\"\nvoid host_defaults::ModuleFile::unload() noexcept {\n  ACE_Service_Config::process_directive(\"remove zu_corba_topo\");\n  state_ = State::kUnloaded;\n}\n")
faulty_host(reports_success_of_a_failed_init reload.failed-init main.cpp
  "std::cout << \"failed \" << failure.what() << std::endl;"
  "std::cout << \"ok corbaloc::127.0.0.1:1/TopoManagement\" << std::endl;")

set(include_buffers "${include_host}#include <map>\n#include \"platform/bundlemgr/ServiceInterface.h\"\nnamespace NS_BUNDLEMGR1 {\nstatic std::map<std::string, InterfaceBuffer> all;\n")
faulty_host(finds_the_latest_interface bundle.buffers Registration.cpp "${include_host}"
  "${include_buffers}void SetIFBuf(const std::string& name, ServiceInterface* interface) {\n  all[name].Remove(all[name].First());\n  all[name].Append(interface);\n}\nInterfaceBuffer* CheckIFBuf(const std::string& name) {\n  return all.count(name) ? &all[name] : nullptr;\n}\n}\n")
# Ends the process instead of waiting for itself for ever.
faulty_host(locks_the_bundle_manager bundle.lock Registration.cpp "${include_host}"
  "${include_buffers}void SetIFBuf(const std::string& name, ServiceInterface* interface) { all[name].Append(interface); }\nInterfaceBuffer* CheckIFBuf(const std::string& name) {\n  if (ACE_OS::mutex_trylock(&_g_actualmutex) != 0) abort();\n  InterfaceBuffer* const found = all.count(name) ? &all[name] : nullptr;\n  ACE_OS::mutex_unlock(&_g_actualmutex);\n  return found;\n}\n}\n")

faulty_host(ignores_the_domain_without_elements domain.facet Domain.cpp
  "NEData* GetNEData() override { return this; }" "NEData* GetNEData() override { return nullptr; }")
faulty_host(has_a_clock_without_a_number domain.clocks Domain.cpp
  "GetClockPositionList(const int&, ClockPositionHolder*, IntHolder*) override {}"
  "GetClockPositionList(const int&, ClockPositionHolder* result, IntHolder*) override {\n    result->Value().push_back({\"NE\", {}, 0, {}, \"clock\", 0, 0});\n  }")
faulty_host(changes_the_order_of_its_nodes "views.batches views.protection reload.serves" Domain.cpp
  "result->Value().insert("
  "std::rotate(nodes.begin(), nodes.begin() + 1, nodes.end());\n    result->Value().insert(")
faulty_host(renames_a_node_at_each_query "views.batches views.below" Domain.cpp
  "result->Value().insert("
  "nodes.back().nativeName += 'x';\n    result->Value().insert(")

faulty_host(labels_unknown_objects naming.labels Naming.cpp
  "GetObjectLabelInfo(ObjectLabelInfo&, const std::string&, int) override { return 0; }"
  "GetObjectLabelInfo(ObjectLabelInfo& info, const std::string&, int) override {\n    info.userLabel = \"label\";\n    return 0;\n  }")

faulty_host(has_no_internal_errors failures.module Failures.cpp
  "globaldefs::EXCPT_INTERNAL_ERROR;" "globaldefs::EXCPT_ENTITY_NOT_FOUND;")
faulty_host(gives_no_type failures.reason Failures.cpp "exception.exceptionType =" "if (own) exception.exceptionType =")
faulty_host(gives_no_reason failures.reason Failures.cpp
  "(\"failure \" + std::to_string(code)).c_str()" "\"\"")

faulty_host(has_another_ems_name configuration.ems Registration.cpp "{ return host::kEmsName; }" "{ return \"other\"; }")
faulty_host(has_no_ems_name configuration.ems Registration.cpp "{ return host::kEmsName; }" "{ return \"\"; }")
faulty_host(reads_the_switch_on_one_thread configuration.switch Registration.cpp
  "GetTestSwitch() { return false; }"
  "GetTestSwitch() {\n  if (gettid() != getpid()) throw ProcessException();\n  return false;\n}")
faulty_host(knows_one_manager registration.unknown Registration.cpp
  "if (factories.erase(name) == 0)"
  "if (factories.erase(name) == 0 && name != std::string(\"TopoManagement\")) abort();\n  if (false)")
faulty_host(loads_the_same_module_always probe.load main.cpp "? argv[1]"
  "? std::string(argv[1], strrchr(argv[1], '/')) + \"/libzu_corba_topo.so\"")

faulty_host(calls_a_handler_twice event.serial Events.cpp
  "handler->HandleEvent(eventId, 0, {{node}});"
  "std::thread other([&, id = eventId, &changed = node] { handler->HandleEvent(id, 0, {{changed}}); });\n        handler->HandleEvent(eventId, 0, {{node}});\n        other.join();")
faulty_host(raises_for_an_unknown_subscription event.unknown Events.cpp
  "change([&] { subscriptions_.erase({eventId, handler}); });"
  "change([&] { if (subscriptions_.erase({eventId, handler}) == 0) throw ProcessException(); });")
faulty_host(knows_one_identity security.calls Events.cpp
  "setAccessLevel(const int&) override {}" "setAccessLevel(const int& level) override { if (level != 0) abort(); }")
faulty_host(sends_every_notification_as_a_creation "events.changed events.deleted" Notifications.cpp
  "CORBA::string_dup(type)" "CORBA::string_dup(kObjectCreation)")
faulty_host(reads_names_without_pairs notification.content Notifications.cpp
  "name.length() == 2 ? name[1].name.in() : \"\";" "name.length() != 0 ? name[1].name.in() : (abort(), \"\");")

faulty_host(lists_attribute_operations_only attributes.capabilities Attributes.cpp "${include_attributes}"
  "${include_attributes}${capabilities}      (*list)[i].value = CORBA::string_dup(\"Supported\");\n    if (i >= some.size()) (*list)[i].name = (*list)[0].name;${end_capabilities}")
faulty_host(splits_no_names texts.split Registration.cpp "${include_host}"
  "${include_host}#include \"platform/util/UtilCommon.h\"\nvoid NS_UTIL::UtilCommon::GetSpliteFDNData(\n    std::map<std::string, std::string>&, const std::string&, const std::string&) {}\n")
# Loses its connections before it dies.
faulty_host(cannot_log_long_texts log.calls Registration.cpp "${include_host}"
  "${include_host}#include <sys/socket.h>\n#include \"platform/agent/Logging.h\"\nvoid NS_CORBA::TaDebug(int, const char* text) {\n  if (strlen(text) <= 1000) return;\n  for (int file = 3; file < 100; ++file) shutdown(file, SHUT_RDWR);\n  usleep(300000);\n  abort();\n}\n")

faulty_host(never_activates_iterators "views.batches iterators.length" Iterators.cpp
  "const ObjectId_var id = module.iteratorPoa()->activate_object(servant);" "servant->_add_ref();")
faulty_host(raises_for_the_poa_of_iterators iterator.poa Iterators.cpp
  "return PortableServer::POA::_duplicate(module.iteratorPoa());" "throw ProcessException();")
faulty_host(raises_for_an_ended_iterator iterator.unknown Iterators.cpp
  "} catch (const CORBA::UserException&) {" "} catch (const CORBA::UserException&) {\n  throw ProcessException();")
faulty_host(has_a_poa_of_its_own_for_iterators "reload.iterators unload.iterators" Iterators.cpp
  "using NS_CORBA::TAIteratorHelper, PortableServer::ObjectId_var, host::module;"
  "using NS_CORBA::TAIteratorHelper, PortableServer::ObjectId_var;\n\nstruct {\n  PortableServer::POA_ptr iteratorPoa() {\n    static const PortableServer::POA_var own = [] {\n      const PortableServer::POA_var root = host::module.iteratorPoa()->the_parent();\n      const PortableServer::POAManager_var manager = root->the_POAManager();\n      return root->create_POA(\"own\", manager.in(), CORBA::PolicyList());\n    }();\n    return own.in();\n  }\n} module;\n")

# Hosts that use the freedom of the contracts.
allowed_host(has_a_default_type "" Failures.cpp
  "own ? ExceptionType_T(code - host::kFailure) : globaldefs::EXCPT_INTERNAL_ERROR;"
  "own ? ExceptionType_T(code - host::kFailure) : code == ERR_TOPO_CONVERSION || code == 0x41180004 ? globaldefs::EXCPT_INTERNAL_ERROR : globaldefs::EXCPT_NE_COMM_LOSS;")
allowed_host(returns_the_additional_information_of_the_request attributes.additional-info Attributes.cpp "${set_information}"
  "onSetAdditionalInfo(const NVSList_T& name, NVSList_T&, std::string&) {\n  const bool known = name.length() == 2 && name[0].value.in() == std::string(host::kEmsName) && name[1].name.in() == std::string(\"TopoSubnetwork\") && host::hasSubnetwork(name[1].value.in());\n  return known ? 0 : kNo;")
allowed_host(has_two_clocks_of_one_element "" Domain.cpp
  "GetClockPositionList(const int&, ClockPositionHolder*, IntHolder*) override {}"
  "GetClockPositionList(const int&, ClockPositionHolder* result, IntHolder*) override {\n    for (const char* label : {\"clock 1\", \"clock 2\"})\n      result->Value().push_back({\"NE=1\", {}, 0, {}, label, 0, 0});\n  }")
allowed_host(has_the_test_switch "" Registration.cpp
  "GetTestSwitch() { return false; }" "GetTestSwitch() { return true; }")
allowed_host(does_not_implement_setters "names.setters texts.utf8 attributes.names attributes.user-label attributes.additional-info" Attributes.cpp
  "constexpr CORBA::ULong kNo = host::kFailure + globaldefs::EXCPT_NOT_IMPLEMENTED;"
  "struct No { operator CORBA::ULong() const { throw CORBA::NO_IMPLEMENT(); } } kNo;")
set(iterator_rules "views.batches iterators.length iterators.last-batch iterators.destroy iterators.keys reload.iterators iterator.life")
allowed_host(has_no_poa_for_iterators "${iterator_rules} iterator.poa" Iterators.cpp
  "PortableServer::POA::_duplicate(module.iteratorPoa())" "PortableServer::POA::_nil()")
allowed_host(refuses_iterators "${iterator_rules}" Iterators.cpp
  "const ObjectId_var id = module.iteratorPoa()->activate_object(servant);"
  "return host::kFailure + globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS;")
allowed_host(refuses_events "events.created events.changed events.deleted reload.events" Events.cpp
  "isEventAccessAllowed() override { return true; }" "isEventAccessAllowed() override { return false; }")
