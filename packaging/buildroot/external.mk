include $(sort $(wildcard $(BR2_EXTERNAL_MORVANE_PATH)/package/*/*.mk))
