// A plugin for qemu-user that counts the guest's instructions. To a program that asks by a call that no system has it
// tells through a pipe how many there were until then:
//     syscall(countCall, countMagic, write end of the pipe)     then the pipe holds a line of decimal digits
//
// qemu's header is in no package; this is what is used of it, as of version 1 of the interface (qemu 6.0 and later).
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>

#include "measuring/emulator_call.h"

typedef uint64_t PluginId;
struct qemu_plugin_tb;
typedef struct {
    const char* target;
    struct {
        int least, current;
    } version;
} PluginInfo;  // the beginning of it
enum { addOne = 0 };

extern void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id,
                                                  void (*translated)(PluginId id, struct qemu_plugin_tb* block));
extern size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
extern void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, int operation, void* counter,
                                                     uint64_t amount);
typedef void (*OnSystemCall)(PluginId id, unsigned int processor, int64_t number, uint64_t a1, uint64_t a2,
                             uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8);
extern void qemu_plugin_register_vcpu_syscall_cb(PluginId id, OnSystemCall called);

#define EXPORT __attribute__((visibility("default")))
EXPORT int qemu_plugin_version = 1;

static uint64_t executed;

static void onTranslation(PluginId id, struct qemu_plugin_tb* block) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, addOne, &executed, qemu_plugin_tb_n_insns(block));
}

static void onSystemCall(PluginId id, unsigned int processor, int64_t number, uint64_t magic, uint64_t pipe,
                         uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
    (void)id, (void)processor, (void)a3, (void)a4, (void)a5, (void)a6, (void)a7, (void)a8;
    if ((int32_t)number == countCall && (uint32_t)magic == countMagic) {
        dprintf((int)pipe, "%" PRIu64 "\n", executed);
    }
}

EXPORT int qemu_plugin_install(PluginId id, const PluginInfo* info, int count, char** arguments) {
    (void)info, (void)count, (void)arguments;
    qemu_plugin_register_vcpu_tb_trans_cb(id, onTranslation);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
