import type { Theme } from "vitepress";
import DefaultTheme from "vitepress/theme-without-fonts";

import LivePart from "./LivePart.vue";

import "./style.css";
import "./live.css";

export default {
  extends: DefaultTheme,
  enhanceApp: ({ app }) => void app.component("LivePart", LivePart),
} satisfies Theme;
