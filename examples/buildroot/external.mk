include $(sort $(wildcard $(BR2_EXTERNAL_KESTRUNE_PATH)/package/*/*.mk))
